#version 330 core

// Makes each texel the mean of a square block of the source. Alpha tells how much of the block lies
// within the source, and the colours are multiplied by it.

uniform sampler2D source;
uniform vec2 sourceSize;   // texels
uniform float ratio;       // side of a block in texels of the source
uniform float firstBlock;  // texel of the source at which block 0 begins
uniform bool isOpaque;     // the source's alpha means nothing
uniform bool isUpsideDown; // the source's first row is its lowest

in vec2 at;

out vec4 mean;

// The sum of up to 2 x 2 texels by one sample at the point in their midst.
vec4 patchAt(vec2 corner, float side) {
    vec2 low = max(corner, vec2(0.0));
    vec2 high = min(corner + side, sourceSize);
    vec2 covered = max(high - low, vec2(0.0));
    vec2 place = (low + high) * 0.5 / sourceSize;
    if (isUpsideDown) {
        place.y = 1.0 - place.y;
    }
    vec4 value = texture(source, place);
    return vec4(value.rgb, isOpaque ? 1.0 : value.a) * covered.x * covered.y;
}

void main() {
    // There is a margin of one texel around the blocks.
    vec2 corner = (floor(at) - 1.0) * ratio + firstBlock;
    float side = min(ratio, 2.0);
    vec4 sum = vec4(0.0);
    for (float y = 0.0; y < ratio; y += side) {
        for (float x = 0.0; x < ratio; x += side) {
            sum += patchAt(corner + vec2(x, y), side);
        }
    }
    mean = sum / (ratio * ratio);
}
