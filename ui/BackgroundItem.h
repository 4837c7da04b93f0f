#pragma once

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

/// The near-black background of the window with its purple and its green light, dithered so that its dark
/// gradients show no bands. Drawn as a net of triangles, without a graphics processor as a picture for each
/// size.
class BackgroundItem : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit BackgroundItem(QQuickItem *parent = nullptr);

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;
};
