#version 440

// A soft light behind text: an ellipse that fades out to the item's edges.

layout(location = 0) in vec2 qt_TexCoord0;
layout(location = 0) out vec4 fragColor;

layout(std140, binding = 0) uniform buf {
    mat4 qt_Matrix;
    float qt_Opacity;
    vec4 glowColor;
};

void main()
{
    vec2 point = 2.0 * qt_TexCoord0 - 1.0;
    float fade = clamp(1.0 - dot(point, point), 0.0, 1.0);
    fragColor = glowColor * (fade * fade * qt_Opacity); // the colour comes premultiplied
}
