#pragma once

#include "SurfaceStyle.h"

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

#include <optional>

/// Draws one shape out of a few triangles. Without a graphics processor it is a picture, drawn once for its
/// size. Nothing is drawn again that did not change, and it is as sharp on any screen.
class SurfaceItem : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    // clang-format off
    Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY styleChanged FINAL)
    Q_PROPERTY(QColor baseColor READ baseColor WRITE setBaseColor NOTIFY styleChanged FINAL)
    Q_PROPERTY(QColor startColor READ startColor WRITE setStartColor NOTIFY startColorChanged FINAL)
    Q_PROPERTY(QColor middleColor READ middleColor WRITE setMiddleColor NOTIFY styleChanged FINAL)
    Q_PROPERTY(QColor endColor READ endColor WRITE setEndColor NOTIFY styleChanged FINAL)
    Q_PROPERTY(qreal outlineWidth READ outlineWidth WRITE setOutlineWidth NOTIFY styleChanged FINAL)
    Q_PROPERTY(QColor outlineColor READ outlineColor WRITE setOutlineColor NOTIFY styleChanged FINAL)
    Q_PROPERTY(QColor shadowColor READ shadowColor WRITE setShadowColor NOTIFY styleChanged FINAL)
    Q_PROPERTY(qreal shadowSigma READ shadowSigma WRITE setShadowSigma NOTIFY styleChanged FINAL)
    Q_PROPERTY(QPointF shadowOffset READ shadowOffset WRITE setShadowOffset NOTIFY styleChanged FINAL)
    Q_PROPERTY(QColor secondShadowColor READ secondShadowColor WRITE setSecondShadowColor NOTIFY styleChanged FINAL)
    Q_PROPERTY(qreal secondShadowSigma READ secondShadowSigma WRITE setSecondShadowSigma NOTIFY styleChanged FINAL)
    Q_PROPERTY(QPointF secondShadowOffset READ secondShadowOffset WRITE setSecondShadowOffset NOTIFY styleChanged FINAL)
    Q_PROPERTY(bool restless READ isRestless WRITE setRestless NOTIFY styleChanged FINAL)
    // clang-format on

public:
    explicit SurfaceItem(QQuickItem *parent = nullptr);
    ~SurfaceItem() override;

    qreal radius() const { return m_style.radius; }
    QColor baseColor() const { return m_style.base; }
    QColor startColor() const { return m_style.start; }
    QColor middleColor() const { return m_middle.value_or(m_style.start); }
    QColor endColor() const { return m_end.value_or(m_style.start); }
    qreal outlineWidth() const { return m_style.outlineWidth; }
    QColor outlineColor() const { return m_style.outline; }
    QColor shadowColor() const { return QColor::fromRgba(m_style.first.color); }
    qreal shadowSigma() const { return m_style.first.sigma; }
    QPointF shadowOffset() const { return m_style.first.offset; }
    QColor secondShadowColor() const { return QColor::fromRgba(m_style.second.color); }
    qreal secondShadowSigma() const { return m_style.second.sigma; }
    QPointF secondShadowOffset() const { return m_style.second.offset; }

    void setRadius(qreal radius) { take(m_style.radius, radius); }
    void setBaseColor(const QColor &color) { take(m_style.base, color); }
    void setStartColor(const QColor &color);
    /// The middle and the end of the gradient are its start until they are set.
    void setMiddleColor(const QColor &color) { take(m_middle, std::optional(color)); }
    void setEndColor(const QColor &color) { take(m_end, std::optional(color)); }
    void setOutlineWidth(qreal width) { take(m_style.outlineWidth, width); }
    void setOutlineColor(const QColor &color) { take(m_style.outline, color); }
    void setShadowColor(const QColor &color) { take(m_style.first.color, color.rgba()); }
    void setShadowSigma(qreal sigma) { take(m_style.first.sigma, sigma); }
    void setShadowOffset(QPointF offset) { take(m_style.first.offset, offset); }
    void setSecondShadowColor(const QColor &color) { take(m_style.second.color, color.rgba()); }
    void setSecondShadowSigma(qreal sigma) { take(m_style.second.sigma, sigma); }
    void setSecondShadowOffset(QPointF offset) { take(m_style.second.offset, offset); }

    /// A shape that changes as the time goes by, such as the full part of a bar. It always draws itself, so
    /// that those that rest need not.
    bool isRestless() const { return m_restless; }
    void setRestless(bool restless);

    /// As it is drawn.
    SurfaceStyle style() const;

Q_SIGNALS:
    void startColorChanged(); ///< apart, since others follow it
    void styleChanged();

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private:
    template <typename Value>
    void take(Value &held, const Value &given)
    {
        if (held == given)
            return;
        held = given;
        update();
        Q_EMIT styleChanged();
    }

    SurfaceStyle m_style;
    std::optional<QColor> m_middle;
    std::optional<QColor> m_end;
    bool m_restless = false;
};
