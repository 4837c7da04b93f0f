#pragma once

#include <QColor>
#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

/// A soft light behind a text: an ellipse that fades out to the item's edges. Of coloured triangles like the
/// shapes, so that it needs no drawing program of its own; nothing without a graphics processor.
class GlowItem : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor glowColor READ glowColor WRITE setGlowColor NOTIFY glowColorChanged FINAL REQUIRED)

public:
    explicit GlowItem(QQuickItem *parent = nullptr);

    /// In the middle, with its own opacity.
    QColor glowColor() const { return m_glowColor; }
    void setGlowColor(const QColor &color);

Q_SIGNALS:
    void glowColorChanged();

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;

private:
    QColor m_glowColor;
};
