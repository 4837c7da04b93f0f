#pragma once

#include "SurfaceNodes.h"

class QSGGeometry;

/// Makes `geometry` (coloured points, triangles) the fill and the outline, with edges that are soft over one
/// pixel of the screen.
void fillShape(const SurfaceLook &look, QSGGeometry &geometry);

/// The size of the shape whose shadows, with their middle parts stretched, are those of this one.
QSizeF sizeOfShadowPicture(const SurfaceLook &look);

/// Makes `geometry` (textured points, triangles) what lies around the shape, out of the picture of the
/// shadows of a shape of size `drawn`, which takes up the part `texture` of its texture.
void fillShadows(const SurfaceLook &look, QSizeF drawn, const QRectF &texture, QSGGeometry &geometry);
