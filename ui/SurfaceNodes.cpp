#include "SurfaceNodes.h"

#include "drawSurface.h"
#include "surfaceMesh.h"

#include <QQuickWindow>
#include <QSGGeometryNode>
#include <QSGImageNode>
#include <QSGTexture>
#include <QSGVertexColorMaterial>

#include <memory>
#include <optional>
#include <vector>

namespace {

using Texture = std::shared_ptr<QSGTexture>;

/// The picture of that look, drawn once for all shapes of the window that show it now.
Texture textureOf(const SurfaceLook &look, QQuickWindow &window)
{
    struct Kept
    {
        SurfaceLook look;
        const QQuickWindow *window;
        std::weak_ptr<QSGTexture> texture;
    };
    thread_local std::vector<Kept> all; // each thread that renders has its own; few at a time
    std::erase_if(all, [](const Kept &kept) { return kept.texture.expired(); });
    for (const auto &kept : all) {
        if (kept.window == &window && kept.look == look) {
            if (auto texture = kept.texture.lock())
                return texture;
        }
    }
    const Texture texture(window.createTextureFromImage(drawSurface(look.style, look.size, look.scale)));
    all.push_back({look, &window, texture});
    return texture;
}

class TriangleNode : public SurfaceNode
{
public:
    TriangleNode()
        : m_geometry(QSGGeometry::defaultAttributes_ColoredPoint2D(), 0, 0)
    {
        m_geometry.setDrawingMode(QSGGeometry::DrawTriangles);
        m_material.setFlag(QSGMaterial::Blending);
        m_drawn.setGeometry(&m_geometry);
        m_drawn.setMaterial(&m_material);
        m_drawn.setFlag(OwnedByParent, false);
        appendChildNode(&m_drawn);
    }
    ~TriangleNode() override { removeAllChildNodes(); }

    void show(const SurfaceLook &look, QQuickWindow &) override
    {
        if (m_look == look)
            return;
        m_look = look;
        fillShape(look, m_geometry);
        m_drawn.markDirty(DirtyGeometry);
    }

private:
    std::optional<SurfaceLook> m_look;
    QSGGeometry m_geometry;
    QSGVertexColorMaterial m_material;
    QSGGeometryNode m_drawn;
};

class PictureNode : public SurfaceNode
{
public:
    void show(const SurfaceLook &look, QQuickWindow &window) override
    {
        if (m_look == look)
            return;
        m_look = look;
        if (!m_image) {
            m_image.reset(window.createImageNode());
            m_image->setFlag(OwnedByParent, false);
            appendChildNode(m_image.get());
        }
        const auto texture = textureOf(look, window);
        m_image->setTexture(texture.get());
        m_texture = texture;
        const auto margin = look.style.margin();
        m_image->setRect(QRectF(QPointF(-margin, -margin), texture->textureSize().toSizeF() / look.scale));
    }
    ~PictureNode() override { removeAllChildNodes(); }

private:
    std::optional<SurfaceLook> m_look;
    Texture m_texture;
    std::unique_ptr<QSGImageNode> m_image;
};

} // namespace

SurfaceNode *makeTriangleNode()
{
    return new TriangleNode;
}

SurfaceNode *makePictureNode()
{
    return new PictureNode;
}
