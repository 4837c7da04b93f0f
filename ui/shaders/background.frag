#version 440

// The window's background, dithered so that its dark gradients show no bands.

layout(location = 0) in vec3 light;
layout(location = 0) out vec4 fragColor;

layout(std140, binding = 0) uniform buf {
    mat4 matrix;
    float opacity;
};

void main()
{
    float noise = fract(52.9829189 * fract(dot(gl_FragCoord.xy, vec2(0.06711056, 0.00583715))));
    fragColor = vec4(light + (noise - 0.5) / 255.0, 1.0) * opacity;
}
