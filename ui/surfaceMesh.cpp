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
    const auto part = [](float value) { return uchar(value * 255 + 0.5f); };
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

/// Fades from full half a pixel inside the edge to nothing half a pixel outside.
void addFill(const SurfaceFill &fill, const std::vector<EdgePoint> &edge, QPointF middle, qreal halfPixel,
             Vertices &vertices, Indices &indices)
{
    const auto count = qsizetype(edge.size());
    const auto first = qsizetype(vertices.size());
    for (const auto &point : edge) {
        const auto place = point.place - halfPixel * point.outwards;
        vertices.push_back(vertex(place, fill.at(place)));
    }
    for (const auto &point : edge)
        vertices.push_back(vertex(point.place + halfPixel * point.outwards, {0, 0, 0, 0}));
    vertices.push_back(vertex(middle, fill.at(middle)));
    for (qsizetype here = 0; here < count; ++here) {
        for (const auto index : {first + 2 * count, first + here, first + (here + 1) % count})
            indices.push_back(quint16(index));
    }
    addBand(first, first + count, count, indices);
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

/// One axis of the picture of the shadows: where its lines lie in the window, and where in the picture.
struct ShadowLines
{
    std::array<qreal, 6> places;
    std::array<qreal, 6> parts; ///< 0 to 1

    /// Between the second line and the fifth nothing but the shape is seen.
    ShadowLines(qreal length, qreal drawn, qreal margin, qreal bend, qreal wholePicture)
        : places{-margin, bend, drawn / 2, length - drawn / 2, length - bend, length + margin}
        , parts{0,
                bend + margin,
                drawn / 2 + margin,
                drawn / 2 + margin,
                drawn - bend + margin,
                drawn + 2 * margin}
    {
        for (auto &part : parts)
            part /= wholePicture;
    }
};

/// How much of a side needs its own picture, so that what lies between its ends only has to be stretched.
qreal drawnLength(const SurfaceLook &look, qreal length)
{
    const auto ends = 2 * std::ceil(1.528 * look.style.radius + look.style.margin());
    return std::min(length, ends);
}

} // namespace

void fillShape(const SurfaceLook &look, QSGGeometry &geometry)
{
    const auto halfPixel = 0.5 / look.scale;
    const auto edge =
        edgeOf(look.size, SurfaceCorner(look.style.radius, std::min(look.size.width(), look.size.height())));
    Vertices vertices;
    Indices indices;
    if (const SurfaceFill fill(look.style, look.size); fill.isDrawn())
        addFill(fill, edge, {look.size.width() / 2, look.size.height() / 2}, halfPixel, vertices, indices);
    if (look.style.outlineWidth > 0 && look.style.outline.alpha() > 0)
        addOutline(premultiplied(look.style.outline), look.style.outlineWidth, edge, halfPixel, vertices,
                   indices);
    geometry.allocate(int(vertices.size()), int(indices.size()));
    std::copy(vertices.begin(), vertices.end(), geometry.vertexDataAsColoredPoint2D());
    std::copy(indices.begin(), indices.end(), geometry.indexDataAsUShort());
}

QSizeF sizeOfShadowPicture(const SurfaceLook &look)
{
    return {drawnLength(look, look.size.width()), drawnLength(look, look.size.height())};
}

void fillShadows(const SurfaceLook &look, QSizeF drawn, const QRectF &texture, QSGGeometry &geometry)
{
    const qreal margin = look.style.margin();
    const auto bend = std::min(0.2929 * look.style.radius + 1, std::min(drawn.width(), drawn.height()) / 2);
    // The picture ends on a whole pixel.
    const auto whole = [&](qreal length) {
        return std::ceil((length + 2 * margin) * look.scale) / look.scale;
    };
    const ShadowLines columns(look.size.width(), drawn.width(), margin, bend, whole(drawn.width()));
    const ShadowLines rows(look.size.height(), drawn.height(), margin, bend, whole(drawn.height()));

    constexpr int side = 6;
    geometry.allocate(side * side, (5 * 5 - 3 * 3) * 6);
    auto *point = geometry.vertexDataAsTexturedPoint2D();
    for (size_t row = 0; row < side; ++row) {
        for (size_t column = 0; column < side; ++column, ++point) {
            point->set(float(columns.places[column]), float(rows.places[row]),
                       float(texture.x() + columns.parts[column] * texture.width()),
                       float(texture.y() + rows.parts[row] * texture.height()));
        }
    }
    auto *index = geometry.indexDataAsUShort();
    for (int row = 0; row < side - 1; ++row) {
        for (int column = 0; column < side - 1; ++column) {
            if (row > 0 && row < side - 2 && column > 0 && column < side - 2)
                continue;
            const auto corner = quint16(row * side + column);
            for (const int offset : {0, 1, side, side, 1, side + 1})
                *index++ = quint16(corner + offset);
        }
    }
}
