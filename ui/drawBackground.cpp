#include "drawBackground.h"

#include <algorithm>
#include <cmath>

namespace {

const QVector3D top(0.035f, 0.041f, 0.07f);
const QVector3D middle(0.02f, 0.018f, 0.04f);
const QVector3D bottom(0.005f, 0.009f, 0.02f);

/// A light that is full within `full` logical pixels of a corner and gone at `gone`.
struct Glow
{
    QVector3D color;
    float opacity;
    qreal full;
    qreal gone;

    QVector3D over(QVector3D below, qreal distance) const
    {
        const auto part = opacity * float(std::clamp(1 - (distance - full) / (gone - full), 0.0, 1.0));
        return color * part + below * (1 - part);
    }
};

const Glow purple{{0.63f, 0.33f, 1.0f}, 0.34f, 30, 520};
const Glow green{{0.27f, 1.0f, 0.56f}, 0.2f, 40, 600};
constexpr float shadeAtTheBottom = 0.22f; // of black

/// Between -0.5 and 0.5, evenly spread and different from pixel to pixel.
float noise(int column, int row)
{
    const auto seed = 0.06711056f * float(column) + 0.00583715f * float(row);
    const auto value = 52.9829189f * (seed - std::floor(seed));
    return value - std::floor(value) - 0.5f;
}

} // namespace

QVector3D backgroundAt(QPointF place, QSizeF size)
{
    const auto square = size.width() * size.width() + size.height() * size.height();
    const auto along = float((place.x() * size.width() + place.y() * size.height()) / square);
    auto color =
        along < 0.5f ? top + (middle - top) * (along * 2) : middle + (bottom - middle) * (along * 2 - 1);
    color = purple.over(color, std::hypot(place.x(), place.y()));
    color = green.over(color, std::hypot(place.x() - size.width(), place.y() - size.height()));
    return color * (1 - shadeAtTheBottom * float(place.y() / size.height()));
}

QImage drawBackground(QSizeF size, qreal scale)
{
    QImage image(int(std::ceil(size.width() * scale)), int(std::ceil(size.height() * scale)),
                 QImage::Format_RGB32);
    for (int row = 0; row < image.height(); ++row) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int column = 0; column < image.width(); ++column) {
            const auto color = backgroundAt({(column + 0.5) / scale, (row + 0.5) / scale}, size);
            const auto part = [&, shift = noise(column, row)](float value) {
                return std::clamp(int(value * 255 + 0.5f + shift), 0, 255);
            };
            line[column] = qRgb(part(color.x()), part(color.y()), part(color.z()));
        }
    }
    return image;
}
