#include "contrast.h"

#include <QtMath>

namespace {

/// A channel that differs by less between the two pictures belongs to no letter.
constexpr int fewestSteps = 3;

/// Part of a line's height below which too little is in sight to be read or measured.
constexpr double leastSeen = 0.25;

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor &color)
{
    return 0.2126 * linear(double(color.redF())) + 0.7152 * linear(double(color.greenF())) +
           0.0722 * linear(double(color.blueF()));
}

bool differs(QRgb left, QRgb right)
{
    return std::abs(qRed(left) - qRed(right)) >= fewestSteps ||
           std::abs(qGreen(left) - qGreen(right)) >= fewestSteps ||
           std::abs(qBlue(left) - qBlue(right)) >= fewestSteps;
}

TextContrast measure(const WindowText &text, const QImage &with, const QImage &without)
{
    TextContrast contrast{text, 0, 21};
    const auto scale = with.devicePixelRatio();
    const QRectF physical(text.seen.topLeft() * scale, text.seen.size() * scale);
    const auto rect = physical.toAlignedRect().adjusted(-1, -1, 1, 1) & with.rect();
    for (int row = rect.top(); row <= rect.bottom(); ++row) {
        for (int column = rect.left(); column <= rect.right(); ++column) {
            const auto below = without.pixel(column, row);
            if (!differs(with.pixel(column, row), below))
                continue;
            ++contrast.letterPixels;
            const QColor under(below);
            contrast.lowest = std::min(contrast.lowest, contrastRatio(laidOver(text.color, under), under));
        }
    }
    return contrast;
}

bool isReadable(const WindowText &text)
{
    return text.seen.height() >= leastSeen * text.font.pixelSize() && text.seen.width() >= 2;
}

} // namespace

double contrastRatio(const QColor &left, const QColor &right)
{
    const auto [darker, lighter] = std::minmax(luminance(left), luminance(right));
    return (lighter + 0.05) / (darker + 0.05);
}

QColor laidOver(const QColor &top, const QColor &below)
{
    const auto mixed = [opacity = top.alphaF()](float above, float under) {
        return above * opacity + under * (1 - opacity);
    };
    return QColor::fromRgbF(mixed(top.redF(), below.redF()), mixed(top.greenF(), below.greenF()),
                            mixed(top.blueF(), below.blueF()));
}

bool isLarge(const QFont &font)
{
    return font.pixelSize() >= 24 || (font.pixelSize() >= 18.66 && font.weight() >= QFont::Bold);
}

double wantedRatio(const QFont &font)
{
    return isLarge(font) ? 3 : 4.5;
}

Result<QList<TextContrast>> measureTexts(PreviewWindow &window)
{
    const auto with = window.grab();
    if (!with)
        return with.failure();
    const auto texts = windowTexts(window.content());
    QList<qreal> opacities;
    for (const auto &text : texts) {
        opacities.append(text.item->opacity());
        text.item->setOpacity(0);
    }
    const auto without = window.grab();
    for (qsizetype index = 0; index < texts.size(); ++index)
        texts[index].item->setOpacity(opacities[index]);
    if (!without)
        return without.failure();
    QList<TextContrast> measured;
    for (const auto &text : texts) {
        if (isReadable(text))
            measured.append(measure(text, with.value(), without.value()));
    }
    return measured;
}

RingContrast measureRing(const QImage &with, const QImage &without, const QRectF &place)
{
    constexpr int reach = 5;  // pixels on either side of the edge in which a mark may lie
    constexpr int beyond = 8; // pixels outside of the edge where there is none any more
    RingContrast ring{0, 21};
    const auto area = place.toAlignedRect();
    const auto middle = area.center();
    // `outwards` is one pixel away from the control.
    const auto strongest = [&](QPoint edge, QPoint outwards) {
        const auto around = edge + beyond * outwards;
        double best = 1;
        for (int offset = -reach; offset <= reach; ++offset) {
            const auto point = edge + offset * outwards;
            if (!with.rect().contains(point) || !with.rect().contains(around) ||
                !differs(with.pixel(point), without.pixel(point)))
                continue;
            ++ring.pixels;
            best = std::max(best, contrastRatio(QColor(with.pixel(point)), QColor(with.pixel(around))));
        }
        return best;
    };
    for (const double side :
         {strongest({middle.x(), area.top()}, {0, -1}), strongest({middle.x(), area.bottom()}, {0, 1}),
          strongest({area.left(), middle.y()}, {-1, 0}), strongest({area.right(), middle.y()}, {1, 0})})
        ring.lowest = std::min(ring.lowest, side);
    return ring;
}
