#include "SurfaceNodes.h"

#include "drawSurface.h"
#include "surfaceMesh.h"

#include <QQuickWindow>
#include <QSGGeometryNode>
#include <QSGImageNode>
#include <QSGTexture>
#include <QSGTextureMaterial>
#include <QSGVertexColorMaterial>

#include <memory>

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
        : m_shape(QSGGeometry::defaultAttributes_ColoredPoint2D(), 0, 0)
        , m_shadows(QSGGeometry::defaultAttributes_TexturedPoint2D(), 0, 0)
    {
        m_shape.setDrawingMode(QSGGeometry::DrawTriangles);
        m_shapeNode.setGeometry(&m_shape);
        m_shapeNode.setMaterial(&m_shapeMaterial);
        m_shapeMaterial.setFlag(QSGMaterial::Blending);
        m_shadows.setDrawingMode(QSGGeometry::DrawTriangles);
        m_shadowNode.setGeometry(&m_shadows);
        m_shadowNode.setMaterial(&m_shadowMaterial);
        m_shadowMaterial.setFlag(QSGMaterial::Blending);
        m_shadowMaterial.setFiltering(QSGTexture::Linear);
        for (auto *node : {&m_shadowNode, &m_shapeNode}) {
            node->setFlag(OwnedByParent, false);
            appendChildNode(node);
        }
    }
    ~TriangleNode() override { removeAllChildNodes(); }

    void show(const SurfaceLook &look, QQuickWindow &window) override
    {
        if (m_look == look)
            return;
        m_look = look;
        fillShape(look, m_shape);
        m_shapeNode.markDirty(DirtyGeometry);
        showShadows(window);
    }

private:
    void showShadows(QQuickWindow &window)
    {
        const auto shadows = m_look->style.shadowsAlone();
        if (!shadows.first.isDrawn() && !shadows.second.isDrawn()) {
            m_shadows.allocate(0, 0);
            m_texture.reset();
        } else {
            const SurfaceLook drawn{shadows, sizeOfShadowPicture(*m_look), m_look->scale};
            m_texture = textureOf(drawn, window);
            m_shadowMaterial.setTexture(m_texture.get());
            fillShadows(*m_look, drawn.size, m_texture->normalizedTextureSubRect(), m_shadows);
            m_shadowNode.markDirty(DirtyMaterial);
        }
        m_shadowNode.markDirty(DirtyGeometry);
    }

    std::optional<SurfaceLook> m_look;
    QSGGeometry m_shape;
    QSGVertexColorMaterial m_shapeMaterial;
    QSGGeometryNode m_shapeNode;
    Texture m_texture;
    QSGGeometry m_shadows;
    QSGTextureMaterial m_shadowMaterial;
    QSGGeometryNode m_shadowNode;
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
