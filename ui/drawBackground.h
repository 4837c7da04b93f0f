#pragma once

#include <QImage>
#include <QVector3D>

/// The colour of a background of that size at `place`, both in logical pixels; red, green and blue, 0 to 1.
QVector3D backgroundAt(QPointF place, QSizeF size);

/// All of it, opaque and dithered; `scale` is the number of the picture's pixels in a logical one.
QImage drawBackground(QSizeF size, qreal scale);
