#version 330 core

// Rectangles in pixels of the target, origin at its top left, y down.

uniform vec4 toClip; // factors and offsets from pixels to clip coordinates

layout(location = 0) in vec2 position;

out vec2 at;

void main() {
    at = position;
    gl_Position = vec4(position * toClip.xy + toClip.zw, 0.0, 1.0);
}
