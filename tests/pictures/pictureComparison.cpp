#include "pictureComparison.h"

#include "pictureSet.h"

using namespace Qt::StringLiterals;

namespace {

/// What a channel may differ by: the calm, one step of the dither, and one of the driver's.
constexpr int allowedChannel = mostCalmed + 2;

/// Fewer pixels than this are an edge that was rounded otherwise; the smallest icon and letter have more.
constexpr int fewestVisible = 12;

int channelDifference(QRgb left, QRgb right)
{
    return std::max({std::abs(qRed(left) - qRed(right)), std::abs(qGreen(left) - qGreen(right)),
                     std::abs(qBlue(left) - qBlue(right))});
}

} // namespace

bool PictureDifference::isVisible() const
{
    return !sameSize || pixels >= fewestVisible;
}

QString PictureDifference::summary() const
{
    if (!sameSize)
        return u"the pictures are not of one size"_s;
    return u"%1 pixels differ, by up to %2 of 255, within %3x%4 at %5,%6"_s.arg(pixels)
        .arg(largest)
        .arg(where.width())
        .arg(where.height())
        .arg(where.x())
        .arg(where.y());
}

PictureDifference comparePictures(const QImage &drawn, const QImage &stored)
{
    const auto left = drawn.convertToFormat(QImage::Format_RGB32);
    const auto right = stored.convertToFormat(QImage::Format_RGB32);
    PictureDifference difference;
    difference.picture = left;
    difference.sameSize = left.size() == right.size();
    if (!difference.sameSize)
        return difference;
    for (int row = 0; row < left.height(); ++row) {
        for (int column = 0; column < left.width(); ++column) {
            const auto color = left.pixel(column, row);
            const int by = channelDifference(color, right.pixel(column, row));
            const bool differs = by > allowedChannel;
            difference.picture.setPixel(column, row,
                                        differs ? qRgb(255, 60, 60) : QColor(color).darker(300).rgb());
            if (!differs)
                continue;
            ++difference.pixels;
            difference.largest = std::max(difference.largest, by);
            difference.where |= QRect(column, row, 1, 1);
        }
    }
    return difference;
}
