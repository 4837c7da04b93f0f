#include "GlowItem.h"

#include <QQuickWindow>
#include <QSGGeometryNode>
#include <QSGRendererInterface>
#include <QSGVertexColorMaterial>
#include <QtMath>

namespace {

constexpr int rings = 16;   // linear in between, which is off by 0.4 % of the light at most
constexpr int corners = 48; // of the outermost ring, which shows nothing

/// How much of the light is left at that part of the way from the middle to the edge.
double fade(double way)
{
    const double rest = 1 - way * way;
    return rest * rest;
}

uchar part(int channel, double alpha)
{
    return uchar(qRound(channel * alpha)); // the scene graph takes colours premultiplied
}

void fillGlow(QSGGeometry &geometry, QSizeF size, const QColor &color)
{
    auto *points = geometry.vertexDataAsColoredPoint2D();
    const auto put = [&](double way, int corner) {
        const double angle = 2 * M_PI * corner / corners;
        const double alpha = color.alphaF() * fade(way);
        points++->set(float(size.width() / 2 * (1 + way * qCos(angle))),
                      float(size.height() / 2 * (1 + way * qSin(angle))), part(color.red(), alpha),
                      part(color.green(), alpha), part(color.blue(), alpha), part(255, alpha));
    };
    put(0, 0);
    for (int ring = 1; ring <= rings; ++ring) {
        for (int corner = 0; corner < corners; ++corner)
            put(double(ring) / rings, corner);
    }
}

/// A fan around the middle, then a band from each ring to the next.
void fillTriangles(QSGGeometry &geometry)
{
    auto *index = geometry.indexDataAsUShort();
    const auto at = [](int ring, int corner) { return quint16(1 + (ring - 1) * corners + corner % corners); };
    for (int corner = 0; corner < corners; ++corner) {
        for (const auto point : {quint16(0), at(1, corner), at(1, corner + 1)})
            *index++ = point;
    }
    for (int ring = 2; ring <= rings; ++ring) {
        for (int corner = 0; corner < corners; ++corner) {
            const auto inner = at(ring - 1, corner);
            const auto outer = at(ring, corner + 1);
            for (const auto point : {inner, at(ring, corner), outer, inner, outer, at(ring - 1, corner + 1)})
                *index++ = point;
        }
    }
}

QSGGeometryNode *makeNode()
{
    auto *geometry = new QSGGeometry(QSGGeometry::defaultAttributes_ColoredPoint2D(), 1 + rings * corners,
                                     3 * corners * (2 * rings - 1));
    geometry->setDrawingMode(QSGGeometry::DrawTriangles);
    fillTriangles(*geometry);
    auto *material = new QSGVertexColorMaterial;
    material->setFlag(QSGMaterial::Blending);
    auto *node = new QSGGeometryNode;
    node->setFlags(QSGNode::OwnsGeometry | QSGNode::OwnsMaterial);
    node->setGeometry(geometry);
    node->setMaterial(material);
    return node;
}

} // namespace

GlowItem::GlowItem(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void GlowItem::setGlowColor(const QColor &color)
{
    if (m_glowColor == color)
        return;
    m_glowColor = color;
    update();
    Q_EMIT glowColorChanged();
}

QSGNode *GlowItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    const bool hasTriangles = window()->rendererInterface()->graphicsApi() != QSGRendererInterface::Software;
    if (!hasTriangles || size().isEmpty()) {
        delete old;
        return nullptr;
    }
    auto *node = old ? static_cast<QSGGeometryNode *>(old) : makeNode();
    fillGlow(*node->geometry(), size(), m_glowColor);
    node->markDirty(QSGNode::DirtyGeometry);
    return node;
}

void GlowItem::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        update();
}
