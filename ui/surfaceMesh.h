#pragma once

#include "SurfaceNodes.h"

class QSGGeometry;

/// Makes `geometry` (coloured points, triangles) the shadows around the shape, its fill and its outline, with
/// edges that are soft over one pixel of the screen.
void fillShape(const SurfaceLook &look, QSGGeometry &geometry);
