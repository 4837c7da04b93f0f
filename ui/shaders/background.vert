#version 440

layout(location = 0) in vec2 place;
layout(location = 1) in vec3 lightHere;
layout(location = 0) out vec3 light;

layout(std140, binding = 0) uniform buf {
    mat4 matrix;
    float opacity;
};

void main()
{
    light = lightHere;
    gl_Position = matrix * vec4(place, 0.0, 1.0);
}
