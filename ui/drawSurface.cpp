#include "drawSurface.h"

#include "surfaceShape.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// How much a shadow covers along one axis, for each pixel.
std::vector<float> covered(qsizetype pixels, qreal scale, qreal margin, qreal length, qreal offset,
                           qreal sigma)
{
    std::vector<float> strengths;
    for (qsizetype pixel = 0; pixel < pixels; ++pixel) {
        const auto place = (qreal(pixel) + 0.5) / scale - margin - offset;
        strengths.push_back(blurredSide(place, length, sigma));
    }
    return strengths;
}

/// One shadow over a whole picture.
class ShadowField
{
public:
    ShadowField(const SurfaceShadow &shadow, QSize pixels, qreal scale, qreal margin, QSizeF size)
        : m_drawn(shadow.isDrawn())
        , m_color(premultiplied(QColor::fromRgba(shadow.color)))
    {
        if (!m_drawn)
            return;
        m_columns = covered(pixels.width(), scale, margin, size.width(), shadow.offset.x(), shadow.sigma);
        m_rows = covered(pixels.height(), scale, margin, size.height(), shadow.offset.y(), shadow.sigma);
    }

    QVector4D at(int column, int row) const
    {
        return m_drawn ? m_color * m_columns[size_t(column)] * m_rows[size_t(row)] : QVector4D();
    }

private:
    bool m_drawn;
    QVector4D m_color;
    std::vector<float> m_columns;
    std::vector<float> m_rows;
};

QRgb rounded(QVector4D color)
{
    const auto part = [](float value) { return qRound(value * 255); };
    return qRgba(part(color.x()), part(color.y()), part(color.z()), part(color.w()));
}

} // namespace

QImage drawSurface(const SurfaceStyle &style, QSizeF size, qreal scale)
{
    const auto margin = style.margin();
    const QSize pixels(int(std::ceil((size.width() + 2 * margin) * scale)),
                       int(std::ceil((size.height() + 2 * margin) * scale)));
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    const SurfaceCorner corner(style.radius, std::min(size.width(), size.height()));
    const ShadowField first(style.first, pixels, scale, margin, size);
    const ShadowField second(style.second, pixels, scale, margin, size);
    const auto outline = premultiplied(style.outline);
    const SurfaceFill fill(style, size);

    for (int row = 0; row < pixels.height(); ++row) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int column = 0; column < pixels.width(); ++column) {
            const QPointF place((column + 0.5) / scale - margin, (row + 0.5) / scale - margin);
            const auto distance =
                corner.distance(place - QPointF(size.width() / 2, size.height() / 2), size / 2) * scale;
            const auto inside = float(std::clamp(0.5 - distance, 0.0, 1.0));
            QVector4D color;
            if (inside < 1)
                color = over(first.at(column, row), second.at(column, row)) * (1 - inside);
            if (inside > 0) {
                const auto core = float(std::clamp(0.5 - distance - style.outlineWidth * scale, 0.0, 1.0));
                auto own = fill.at(place);
                if (core < 1)
                    own = over(outline * (1 - core), own);
                color += own * inside;
            }
            line[column] = rounded(color);
        }
    }
    return image;
}
