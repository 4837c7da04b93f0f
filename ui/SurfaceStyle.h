#pragma once

#include <QColor>
#include <QPointF>

/// A soft shadow; none where the colour is transparent or `sigma` is 0.
struct SurfaceShadow
{
    QRgb color = 0;
    qreal sigma = 0; ///< of the Gaussian, in logical pixels
    QPointF offset;  ///< in logical pixels

    bool isDrawn() const { return sigma > 0 && qAlpha(color) > 0; }
    /// How far beyond the shape it changes a pixel, in logical pixels.
    qreal reach() const;

    bool operator==(const SurfaceShadow &) const = default;
};

/// How a shape looks; lengths in logical pixels. The three colours are the stops of a gradient from the top
/// leading to the bottom trailing corner, which lies over the base colour.
struct SurfaceStyle
{
    qreal radius = 16; ///< of the circle that the corner stands for; below 1 it counts as 1
    QColor base = Qt::transparent;
    QColor start = Qt::transparent;
    QColor middle = Qt::transparent;
    QColor end = Qt::transparent;
    qreal outlineWidth = 1; ///< inside the edge
    QColor outline = Qt::transparent;
    SurfaceShadow first; ///< over the second
    SurfaceShadow second;

    /// Room that the shadows take beyond the shape on every side, in whole logical pixels.
    int margin() const;

    bool operator==(const SurfaceStyle &) const = default;
};
