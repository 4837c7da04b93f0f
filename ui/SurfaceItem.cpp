#include "SurfaceItem.h"

#include "SurfaceNodes.h"
#include "SurfacePlate.h"

#include <QQuickWindow>
#include <QSGRendererInterface>

SurfaceItem::SurfaceItem(QQuickItem *parent)
    : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

SurfaceItem::~SurfaceItem()
{
    SurfacePlate::leave(this);
}

void SurfaceItem::setStartColor(const QColor &color)
{
    if (m_style.start == color)
        return;
    take(m_style.start, color);
    Q_EMIT startColorChanged();
}

void SurfaceItem::setRestless(bool restless)
{
    if (m_restless == restless)
        return;
    SurfacePlate::leave(this);
    take(m_restless, restless);
    if (window() && !restless)
        SurfacePlate::join(this);
}

SurfaceStyle SurfaceItem::style() const
{
    auto style = m_style;
    style.middle = middleColor();
    style.end = endColor();
    return style;
}

QSGNode *SurfaceItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    if (width() <= 0 || height() <= 0) {
        delete old;
        return nullptr;
    }
    if (!m_restless && SurfacePlate::draws(window())) {
        delete old;
        return nullptr;
    }
    const SurfaceLook look{style(), size(), window()->effectiveDevicePixelRatio()};
    auto *node = static_cast<SurfaceNode *>(old);
    if (!node) {
        const auto software = window()->rendererInterface()->graphicsApi() == QSGRendererInterface::Software;
        node = software ? makePictureNode() : makeTriangleNode();
    }
    node->show(look, *window());
    return node;
}

void SurfaceItem::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        update();
}

void SurfaceItem::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemDevicePixelRatioHasChanged)
        update();
    if (change == ItemSceneChange) {
        SurfacePlate::leave(this);
        if (value.window && !m_restless)
            SurfacePlate::join(this);
    }
    QQuickItem::itemChange(change, value);
}
