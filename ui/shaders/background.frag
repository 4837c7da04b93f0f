#version 440

// The four layers of the window's background, dithered so that the dark gradients show no bands.

layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;

layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    vec2 itemSize;
    vec4 startColor;
    vec4 middleColor;
    vec4 endColor;
    vec4 leadingGlow;  // around the top leading corner
    vec4 trailingGlow; // around the bottom trailing corner
    vec2 leadingRadii; // where the glow is full and where it is gone, in pixels
    vec2 trailingRadii;
    float bottomShade; // black at the bottom edge, 0 to 1
};

float glowAt(vec2 point, vec2 centre, vec2 radii)
{
    return clamp(1.0 - (length(point - centre) - radii.x) / (radii.y - radii.x), 0.0, 1.0);
}

// `light` is premultiplied, as all colours come here.
vec3 lit(vec3 color, vec4 light)
{
    return color * (1.0 - light.a) + light.rgb;
}

void main()
{
    vec2 point = qt_TexCoord0 * itemSize;
    float along = clamp(dot(point, itemSize) / dot(itemSize, itemSize), 0.0, 1.0);
    vec3 color = along < 0.5 ? mix(startColor.rgb, middleColor.rgb, along * 2.0)
                             : mix(middleColor.rgb, endColor.rgb, along * 2.0 - 1.0);
    color = lit(color, leadingGlow * glowAt(point, vec2(0.0), leadingRadii));
    color = lit(color, trailingGlow * glowAt(point, itemSize, trailingRadii));
    color *= 1.0 - bottomShade * qt_TexCoord0.y;
    float noise = fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715))));
    fragColor = vec4(color + (noise - 0.5) / 255.0, 1.0) * qt_Opacity;
}
