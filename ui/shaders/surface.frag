#version 440

// One building block in one pass: a superellipse with a three-stop gradient along its diagonal, a 1 px outline
// inside its edge, and two soft shadows outside of it only, so that glass stays clear. Colours come premultiplied.

layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;

layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    float radius;       // corner radius of the circle that the corner stands for, in pixels
    vec2 itemSize;      // of the whole item, margins included, in pixels
    float margin;       // room for shadows on every side
    float outlineWidth;
    vec4 baseColor;     // under the gradient
    vec4 startColor;    // gradient stops
    vec4 middleColor;
    vec4 endColor;
    vec4 outlineColor;
    vec4 shadowColor;
    vec4 secondShadowColor;
    vec2 shadowOffset;
    vec2 secondShadowOffset;
    float shadowSigma;
    float secondShadowSigma;
};

// Signed distance to the edge in pixels, below 0 inside.
float edgeDistance(vec2 point, vec2 halfSize)
{
    float shortHalf = min(halfSize.x, halfSize.y);
    float extent = max(min(1.528 * radius, shortHalf), 0.001);
    float exponent = -1.0 / log2(1.0 - 0.2929 * min(radius, shortHalf) / extent);
    vec2 corner = abs(point) - (halfSize - extent);
    if (corner.x <= 0.0 || corner.y <= 0.0)
        return max(corner.x, corner.y) - extent;
    float longest = max(corner.x, corner.y);
    vec2 scaled = corner / longest; // keeps the powers in range
    float len = longest * pow(pow(scaled.x, exponent) + pow(scaled.y, exponent), 1.0 / exponent);
    vec2 slope = pow(corner / len, vec2(exponent - 1.0));
    return (len - extent) / max(length(slope), 0.001);
}

// Approximates the error function to 5e-4.
vec2 erf2(vec2 x)
{
    vec2 a = abs(x);
    vec2 r = 1.0 + (0.278393 + (0.230389 + (0.000972 + 0.078108 * a) * a) * a) * a;
    r *= r;
    return sign(x) * (1.0 - 1.0 / (r * r));
}

// A box blurred by a Gaussian. Sigma is at least about the radius in this look, so corners need no more.
float shadowStrength(vec2 point, vec2 halfSize, float sigma)
{
    float scale = 0.70710678 / sigma;
    vec2 covered = 0.5 * (erf2((point + halfSize) * scale) - erf2((point - halfSize) * scale));
    return covered.x * covered.y;
}

vec4 over(vec4 top, vec4 below)
{
    return top + below * (1.0 - top.a);
}

void main()
{
    vec2 size = itemSize - 2.0 * margin;
    vec2 halfSize = 0.5 * size;
    vec2 point = qt_TexCoord0 * itemSize - 0.5 * itemSize;
    float distance = edgeDistance(point, halfSize);
    float smoothing = max(fwidth(point.x), 0.001);
    float inside = clamp(0.5 - distance / smoothing, 0.0, 1.0);

    vec4 color = vec4(0.0);
    if (inside < 1.0) {
        float first = shadowSigma > 0.0 ? shadowStrength(point - shadowOffset, halfSize, shadowSigma) : 0.0;
        float second = secondShadowSigma > 0.0
            ? shadowStrength(point - secondShadowOffset, halfSize, secondShadowSigma) : 0.0;
        color = over(shadowColor * first, secondShadowColor * second) * (1.0 - inside);
    }
    if (inside > 0.0) {
        float along = clamp(dot(point + halfSize, size) / dot(size, size), 0.0, 1.0);
        vec4 gradient = along < 0.5 ? mix(startColor, middleColor, along * 2.0)
                                    : mix(middleColor, endColor, along * 2.0 - 1.0);
        vec4 fill = over(gradient, baseColor);
        float core = clamp(0.5 - (distance + outlineWidth) / smoothing, 0.0, 1.0);
        vec4 outline = outlineColor * (1.0 - core) * step(0.001, outlineWidth);
        color += over(outline, fill) * inside;
    }
    fragColor = color * qt_Opacity;
}
