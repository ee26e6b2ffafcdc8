#version 330 core

// One direction of a Gaussian. Beyond the edges lies nothing: since alpha goes through it as well,
// dividing by it afterwards is what makes up for the weights that fell there.

const int mostTaps = 32;

uniform sampler2D source;
uniform vec2 sourceSize; // texels
uniform vec2 direction;  // one texel along or across
uniform float centre;    // the weight there
uniform int tapCount;
uniform vec2 taps[mostTaps]; // distances in texels, and weights, of what lies to both sides

in vec2 at;

out vec4 blurred;

void main() {
    vec2 place = at / sourceSize;
    vec2 step = direction / sourceSize;
    vec4 sum = texture(source, place) * centre;
    for (int i = 0; i < tapCount; ++i) {
        vec2 away = step * taps[i].x;
        sum += (texture(source, place + away) + texture(source, place - away)) * taps[i].y;
    }
    blurred = sum;
}
