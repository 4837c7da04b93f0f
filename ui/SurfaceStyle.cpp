#include "SurfaceStyle.h"

#include <algorithm>
#include <cmath>

qreal SurfaceShadow::reach() const
{
    if (!isDrawn())
        return 0;
    // Where what is left of its opacity is less than half a step of the 255 that a pixel knows.
    qreal sigmas = 0;
    while (0.5 * std::erfc(sigmas * M_SQRT1_2) * qAlpha(color) > 0.5)
        sigmas += 0.05;
    return sigma * sigmas + qMax(qAbs(offset.x()), qAbs(offset.y()));
}

int SurfaceStyle::margin() const
{
    return int(std::ceil(std::max(first.reach(), second.reach()))) + 1;
}
