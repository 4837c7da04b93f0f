#include "surfaceShape.h"

#include "SurfaceStyle.h"

#include <QColor>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace {

constexpr int mostSegments = 16; // of a corner
constexpr int leastSegments = 6;
constexpr qreal segmentLength = 2.5; // about, in logical pixels

/// Times a place it is 0 at the top leading corner and 1 at the bottom trailing one.
QPointF directionOf(QSizeF size)
{
    const QPointF diagonal(size.width(), size.height());
    return diagonal / QPointF::dotProduct(diagonal, diagonal);
}

QVector4D mixed(QVector4D first, QVector4D second, float part)
{
    return first * (1 - part) + second * part;
}

/// The corner at the bottom trailing end of a quarter, from its straight right side to its straight lower
/// side.
std::vector<EdgePoint> quarter(const SurfaceCorner &corner)
{
    const auto segments = std::clamp(int(corner.extent / segmentLength), leastSegments, mostSegments);
    std::vector<EdgePoint> points;
    for (int step = 0; step <= segments; ++step) {
        const auto angle = M_PI_2 * step / segments;
        const QPointF unit(std::pow(std::max(std::cos(angle), 0.0), 2 / corner.exponent),
                           std::pow(std::max(std::sin(angle), 0.0), 2 / corner.exponent));
        QPointF slope(std::pow(unit.x(), corner.exponent - 1), std::pow(unit.y(), corner.exponent - 1));
        slope /= std::hypot(slope.x(), slope.y());
        points.push_back({corner.extent * unit, slope});
    }
    return points;
}

/// All four corners, which meet in straight sides.
std::vector<EdgePoint> cornersOf(QSizeF size, const SurfaceCorner &corner)
{
    const auto bend = quarter(corner);
    const QPointF inner(size.width() / 2 - corner.extent, size.height() / 2 - corner.extent);
    const QPointF middle(size.width() / 2, size.height() / 2);
    std::vector<EdgePoint> points;
    const auto add = [&](const EdgePoint &point, QPointF sign) {
        const QPointF place = inner + point.place;
        points.push_back({middle + QPointF(place.x() * sign.x(), place.y() * sign.y()),
                          QPointF(point.outwards.x() * sign.x(), point.outwards.y() * sign.y())});
    };
    for (const auto &point : bend)
        add(point, {1, 1});
    for (auto point = bend.rbegin(); point != bend.rend(); ++point)
        add(*point, {-1, 1});
    for (const auto &point : bend)
        add(point, {-1, -1});
    for (auto point = bend.rbegin(); point != bend.rend(); ++point)
        add(*point, {1, -1});
    return points;
}

} // namespace

SurfaceCorner::SurfaceCorner(qreal given, qreal shortSide)
{
    // A sharper corner would turn inside out where the edge is drawn half a pixel further in.
    const auto radius = std::max(given, 1.0);
    extent = std::max(std::min(1.528 * radius, shortSide / 2), 0.001);
    exponent = -1 / std::log2(1 - 0.2929 * std::min(radius, shortSide / 2) / extent);
    if (!std::isfinite(exponent) || exponent <= 1)
        exponent = 2;
}

qreal SurfaceCorner::distance(QPointF point, QSizeF halfSize) const
{
    const QPointF inCorner(std::abs(point.x()) - halfSize.width() + extent,
                           std::abs(point.y()) - halfSize.height() + extent);
    if (inCorner.x() <= 0 || inCorner.y() <= 0)
        return std::max(inCorner.x(), inCorner.y()) - extent;
    const auto length =
        std::pow(std::pow(inCorner.x(), exponent) + std::pow(inCorner.y(), exponent), 1 / exponent);
    const auto slope = std::hypot(std::pow(inCorner.x() / length, exponent - 1),
                                  std::pow(inCorner.y() / length, exponent - 1));
    return (length - extent) / slope;
}

Edge::Edge(QSizeF size, const SurfaceCorner &corner)
    : middles{0, 0}
{
    const auto corners = cornersOf(size, corner);
    const auto direction = directionOf(size);
    size_t found = 0;
    for (size_t index = 0; index < corners.size(); ++index) {
        const auto &here = corners[index];
        const auto &next = corners[(index + 1) % corners.size()];
        points.push_back(here);
        const auto before = QPointF::dotProduct(direction, here.place) - 0.5;
        const auto after = QPointF::dotProduct(direction, next.place) - 0.5;
        if (before * after >= 0 && before != 0)
            continue;
        if (before != 0) {
            const auto part = before / (before - after);
            points.push_back({here.place + part * (next.place - here.place), here.outwards});
        }
        if (found < middles.size())
            middles[found++] = points.size() - 1;
    }
}

SurfaceFill::SurfaceFill(const SurfaceStyle &style, QSizeF size)
    : m_start(over(premultiplied(style.start), premultiplied(style.base)))
    , m_middle(over(premultiplied(style.middle), premultiplied(style.base)))
    , m_end(over(premultiplied(style.end), premultiplied(style.base)))
    , m_direction(directionOf(size))
{
    m_drawn = m_start.w() + m_middle.w() + m_end.w() > 0;
}

QVector4D SurfaceFill::at(QPointF place) const
{
    const auto part = std::clamp(float(QPointF::dotProduct(m_direction, place)), 0.0f, 1.0f);
    return part < 0.5f ? mixed(m_start, m_middle, part * 2) : mixed(m_middle, m_end, part * 2 - 1);
}

float blurredSide(qreal place, qreal length, qreal sigma)
{
    return float((std::erf(place * M_SQRT1_2 / sigma) - std::erf((place - length) * M_SQRT1_2 / sigma)) / 2);
}

QVector4D over(QVector4D top, QVector4D below)
{
    return top + below * (1 - top.w());
}

QVector4D premultiplied(const QColor &color)
{
    const auto alpha = float(color.alphaF());
    return {float(color.redF()) * alpha, float(color.greenF()) * alpha, float(color.blueF()) * alpha, alpha};
}
