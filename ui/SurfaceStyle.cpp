#include "SurfaceStyle.h"

#include <algorithm>
#include <cmath>

int SurfaceStyle::margin() const
{
    return int(std::ceil(std::max(first.reach(), second.reach()))) + 1;
}

SurfaceStyle SurfaceStyle::shadowsAlone() const
{
    SurfaceStyle shadows;
    shadows.radius = radius;
    shadows.outlineWidth = 0;
    shadows.first = first;
    shadows.second = second;
    return shadows;
}
