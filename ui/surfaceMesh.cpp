#include "surfaceMesh.h"

#include "surfaceShape.h"

#include <QSGGeometry>

#include <array>
#include <cmath>

namespace {

using Vertices = std::vector<QSGGeometry::ColoredPoint2D>;
using Indices = std::vector<quint16>;

QSGGeometry::ColoredPoint2D vertex(QPointF place, QVector4D color)
{
    const auto part = [](float value) { return uchar(qRound(value * 255)); };
    QSGGeometry::ColoredPoint2D point{};
    point.set(float(place.x()), float(place.y()), part(color.x()), part(color.y()), part(color.z()),
              part(color.w()));
    return point;
}

/// Triangles between two closed rows of `count` vertices each, which begin at these indices.
void addBand(qsizetype first, qsizetype second, qsizetype count, Indices &indices)
{
    for (qsizetype here = 0; here < count; ++here) {
        const auto next = (here + 1) % count;
        for (const auto index :
             {first + here, first + next, second + here, second + here, first + next, second + next})
            indices.push_back(quint16(index));
    }
}

/// A polygon without a bend inwards, of vertices in order. Its triangles are as large as can be, since thin
/// ones that run through all of it cost much more to draw.
void addPolygon(Indices corners, Indices &indices)
{
    while (corners.size() > 2) {
        Indices left;
        for (size_t here = 0; here < corners.size(); here += 2) {
            left.push_back(corners[here]);
            if (here + 1 < corners.size() && corners.size() > 2) {
                const auto next = corners[(here + 2) % corners.size()];
                if (next != corners[here])
                    indices.insert(indices.end(), {corners[here], corners[here + 1], next});
            }
        }
        if (corners.size() == 3)
            return;
        corners = left;
    }
}

/// Fades from full half a pixel inside the edge to nothing half a pixel outside. Each side of the gradient's
/// middle is a polygon of its own, over which the colour changes evenly.
void addFill(const SurfaceFill &fill, const Edge &edge, qreal halfPixel, Vertices &vertices, Indices &indices)
{
    const auto count = edge.points.size();
    const auto first = vertices.size();
    for (const auto &point : edge.points) {
        const auto place = point.place - halfPixel * point.outwards;
        vertices.push_back(vertex(place, fill.at(place)));
    }
    for (const auto &point : edge.points)
        vertices.push_back(vertex(point.place + halfPixel * point.outwards, QVector4D()));
    std::array<Indices, 2> sides;
    const auto [begin, end] = edge.middles;
    for (size_t index = 0; index < count; ++index) {
        const auto corner = quint16(first + (begin + index) % count);
        if (index <= end - begin)
            sides[0].push_back(corner);
        if (index >= end - begin)
            sides[1].push_back(corner);
    }
    sides[1].push_back(quint16(first + begin));
    for (const auto &side : sides)
        addPolygon(side, indices);
    const auto inner = qsizetype(first);
    const auto round = qsizetype(count);
    addBand(inner, inner + round, round, indices);
}

/// A line of that width inside the edge, soft on both sides.
void addOutline(QVector4D color, qreal width, const std::vector<EdgePoint> &edge, qreal halfPixel,
                Vertices &vertices, Indices &indices)
{
    const auto count = qsizetype(edge.size());
    auto first = qsizetype(vertices.size());
    const std::array<std::pair<qreal, QVector4D>, 4> rows{{{halfPixel, {0, 0, 0, 0}},
                                                           {-halfPixel, color},
                                                           {halfPixel - width, color},
                                                           {-halfPixel - width, {0, 0, 0, 0}}}};
    for (const auto &[distance, at] : rows) {
        for (const auto &point : edge)
            vertices.push_back(vertex(point.place + distance * point.outwards, at));
    }
    for (int band = 0; band < 3; ++band, first += count)
        addBand(first, first + count, count, indices);
}

QVector4D shadowAt(const SurfaceShadow &shadow, QSizeF size, QPointF place)
{
    if (!shadow.isDrawn())
        return {};
    const auto from = place - shadow.offset;
    return premultiplied(QColor::fromRgba(shadow.color)) * blurredSide(from.x(), size.width(), shadow.sigma) *
           blurredSide(from.y(), size.height(), shadow.sigma);
}

/// The same edge with more points where straight sides come near a corner, since shadows fade there.
std::vector<EdgePoint> refined(const std::vector<EdgePoint> &edge, qreal step, qreal reach)
{
    std::vector<EdgePoint> points;
    for (size_t index = 0; index < edge.size(); ++index) {
        const auto &here = edge[index];
        const auto &next = edge[(index + 1) % edge.size()];
        points.push_back(here);
        const auto way = next.place - here.place;
        const auto length = std::hypot(way.x(), way.y());
        for (qreal gone = step; gone < length - step / 2; gone += step) {
            if (gone > reach && length - gone > reach + step)
                gone = length - reach; // the middle of a long side needs none
            points.push_back({here.place + gone / length * way, here.outwards});
        }
    }
    return points;
}

/// Rows of points further and further out. Nothing lies under the shape, so that glass stays clear.
void addShadows(const SurfaceLook &look, const std::vector<EdgePoint> &edge, qreal halfPixel,
                Vertices &vertices, Indices &indices)
{
    const auto &style = look.style;
    const auto sigma = !style.second.isDrawn()  ? style.first.sigma
                       : !style.first.isDrawn() ? style.second.sigma
                                                : std::min(style.first.sigma, style.second.sigma);
    const auto step = sigma / 1.6; // linear in between, which is off by 1.2 % of the shadow at most
    const auto points = refined(edge, step, 2.5 * sigma);
    const auto count = qsizetype(points.size());
    const qreal margin = style.margin();
    auto first = qsizetype(vertices.size());
    const auto addRow = [&](qreal distance, bool seen) {
        for (const auto &point : points) {
            const auto place = point.place + distance * point.outwards;
            const auto color =
                over(shadowAt(style.first, look.size, place), shadowAt(style.second, look.size, place));
            vertices.push_back(vertex(place, seen ? color : QVector4D()));
        }
    };
    addRow(-halfPixel, false);
    for (auto distance = halfPixel; distance < margin + step; distance += step, first += count) {
        addRow(distance, true);
        addBand(first, first + count, count, indices);
    }
}

} // namespace

void fillShape(const SurfaceLook &look, QSGGeometry &geometry)
{
    const auto halfPixel = 0.5 / look.scale;
    const auto shortSide = std::min(look.size.width(), look.size.height());
    const Edge edge(look.size, SurfaceCorner(look.style.radius, shortSide));
    Vertices vertices;
    Indices indices;
    if (look.style.first.isDrawn() || look.style.second.isDrawn())
        addShadows(look, edge.points, halfPixel, vertices, indices);
    if (const SurfaceFill fill(look.style, look.size); fill.isDrawn())
        addFill(fill, edge, halfPixel, vertices, indices);
    if (look.style.outlineWidth > 0 && look.style.outline.alpha() > 0)
        addOutline(premultiplied(look.style.outline), look.style.outlineWidth, edge.points, halfPixel,
                   vertices, indices);
    geometry.allocate(int(vertices.size()), int(indices.size()));
    std::copy(vertices.begin(), vertices.end(), geometry.vertexDataAsColoredPoint2D());
    std::copy(indices.begin(), indices.end(), geometry.indexDataAsUShort());
}
