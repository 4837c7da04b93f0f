#pragma once

#include <QImage>

/// What a drawn picture has that the stored one has not.
struct PictureDifference
{
    bool sameSize = true;
    int pixels = 0;  ///< how many differ by more than rounding
    int largest = 0; ///< the largest difference of one channel, of 255
    QRect where;     ///< around all pixels that differ
    QImage picture;  ///< the drawn one, dark, with these pixels in red

    /// Whether a person could see it.
    bool isVisible() const;
    QString summary() const;
};

/// Compares what was drawn with a stored picture, which was made calm before it was stored. A channel may
/// differ by what this did to it and by what drivers round differently.
PictureDifference comparePictures(const QImage &drawn, const QImage &stored);
