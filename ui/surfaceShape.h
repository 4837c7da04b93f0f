#pragma once

#include <QColor>
#include <QPointF>
#include <QSizeF>
#include <QVector4D>

#include <array>
#include <vector>

struct SurfaceStyle;

/// A corner whose curvature grows softly: a superellipse that meets the circle of `radius` at 45 degrees.
struct SurfaceCorner
{
    qreal extent = 0;   ///< how far from the corner the sides are straight
    qreal exponent = 2; ///< of the superellipse

    /// `shortSide` is that of the shape; it is above 0.
    SurfaceCorner(qreal radius, qreal shortSide);

    /// Distance from `point` to the edge, below 0 inside. `point` is taken from the middle of a shape of that
    /// size.
    qreal distance(QPointF point, QSizeF halfSize) const;
};

/// A point of an edge, and the direction that leads straight out of the shape there.
struct EdgePoint
{
    QPointF place;
    QPointF outwards;
};

/// Once around a shape that begins at 0, 0, clockwise from its right side. The two points half way along the
/// gradient are among them.
struct Edge
{
    std::vector<EdgePoint> points;
    std::array<size_t, 2> middles; ///< where those two are, in order

    Edge(QSizeF size, const SurfaceCorner &corner);
};

/// The fill of a shape that begins at 0, 0.
class SurfaceFill
{
public:
    SurfaceFill(const SurfaceStyle &style, QSizeF size);

    bool isDrawn() const { return m_drawn; }
    /// The premultiplied colour at `place`, which may lie a little outside.
    QVector4D at(QPointF place) const;

private:
    bool m_drawn;
    QVector4D m_start;
    QVector4D m_middle;
    QVector4D m_end;
    QPointF m_direction; ///< the part of the gradient that a pixel to the right and one down are
};

/// How much of a side of that length, blurred by `sigma`, covers a place along it, 0 to 1. A blurred box is
/// the product of both of its sides.
float blurredSide(qreal place, qreal length, qreal sigma);

/// `top` over `below`, both premultiplied.
QVector4D over(QVector4D top, QVector4D below);

/// A colour as it is blended: red, green and blue times the opacity, and that.
QVector4D premultiplied(const QColor &color);
