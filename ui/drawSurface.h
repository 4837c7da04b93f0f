#pragma once

#include "SurfaceStyle.h"

#include <QImage>

/// The shape with all that belongs to it, `size` in logical pixels and style.margin() more on every side;
/// `scale` is the number of the picture's pixels in a logical one.
QImage drawSurface(const SurfaceStyle &style, QSizeF size, qreal scale);
