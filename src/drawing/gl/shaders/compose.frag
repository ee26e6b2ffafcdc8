#version 330 core

// Blends the layers among themselves, from the bottom to the top, and lays them over the scene.
// Colours of layers are premultiplied.

const int mostLayers = 8;

const int backdropKind = 1;
const int imageKind = 2;

const int overlayBlend = 1;
const int softLightBlend = 2;

struct Layer {
    int kind;
    int blend;
    float opacity;
    vec4 frame;   // left, top, width and height in pixels of the target
    vec4 color;   // beneath an image
    mat3 matrix;  // for a backdrop's colours, which are
    vec3 offset;  // not premultiplied
    float factor; // pixels per texel of a backdrop
    vec2 size;    // of the backdrop or image in texels
};

uniform sampler2D scene;
uniform vec2 sceneSize;
uniform bool isUpsideDown; // the scene's first row is its lowest
uniform Layer layers[mostLayers];
uniform sampler2D sources[mostLayers];
uniform int layerCount;
uniform float alpha; // of all layers together

in vec2 at;

out vec4 shown;

vec3 sceneColor() {
    ivec2 texel = ivec2(at);
    if (isUpsideDown) {
        texel.y = int(sceneSize.y) - 1 - texel.y;
    }
    return texelFetch(scene, texel, 0).rgb;
}

// The formulas are those of the W3C's "Compositing and Blending Level 1".

vec3 overlayed(vec3 backdrop, vec3 source) {
    vec3 multiplied = 2.0 * backdrop * source;
    vec3 screened = 1.0 - 2.0 * (1.0 - backdrop) * (1.0 - source);
    return mix(multiplied, screened, greaterThan(backdrop, vec3(0.5)));
}

vec3 softLit(vec3 backdrop, vec3 source) {
    vec3 lighter = mix(((16.0 * backdrop - 12.0) * backdrop + 4.0) * backdrop, sqrt(backdrop),
                       greaterThan(backdrop, vec3(0.25)));
    vec3 darkened = backdrop * (1.0 - backdrop);
    vec3 lightened = lighter - backdrop;
    vec3 strength = 2.0 * source - 1.0;
    return backdrop + strength * mix(darkened, lightened, greaterThan(source, vec3(0.5)));
}

vec4 blended(int blend, vec4 backdrop, vec4 source) {
    vec4 result = source + backdrop * (1.0 - source.a);
    if (blend != 0 && backdrop.a > 0.0 && source.a > 0.0) {
        vec3 below = min(backdrop.rgb / backdrop.a, 1.0);
        vec3 above = min(source.rgb / source.a, 1.0);
        vec3 mixed = blend == overlayBlend ? overlayed(below, above) : softLit(below, above);
        result.rgb += (mixed - above) * source.a * backdrop.a;
    }
    return result;
}

vec4 drawn(Layer layer, sampler2D source) {
    if (layer.kind == backdropKind) {
        vec3 color;
        if (layer.factor == 0.0) {
            color = sceneColor();
        } else {
            // There is a margin of one texel around it.
            vec4 value = texture(source, (at / layer.factor + 1.0) / layer.size);
            color = value.rgb / value.a;
        }
        return vec4(clamp(layer.matrix * color + layer.offset, 0.0, 1.0), 1.0);
    }
    vec4 result = layer.color;
    if (layer.kind == imageKind) {
        vec4 value = texture(source, (at - layer.frame.xy) / layer.frame.zw);
        result = value + result * (1.0 - value.a);
    }
    return result;
}

vec4 withLayer(vec4 canvas, Layer layer, sampler2D source) {
    vec2 inside = at - layer.frame.xy;
    if (any(lessThan(inside, vec2(0.0))) || any(greaterThan(inside, layer.frame.zw))) {
        return canvas;
    }
    return blended(layer.blend, canvas, drawn(layer, source) * layer.opacity);
}

// Samplers may be chosen by constants only.
#define ADD(index)                                                                                 \
    if (index < layerCount)                                                                        \
        canvas = withLayer(canvas, layers[index], sources[index]);

void main() {
    vec4 canvas = vec4(0.0);
    ADD(0)
    ADD(1)
    ADD(2)
    ADD(3)
    ADD(4)
    ADD(5)
    ADD(6)
    ADD(7)
    canvas *= alpha;
    if (canvas.a < 1.0) {
        canvas.rgb += sceneColor() * (1.0 - canvas.a);
    }
    shown = vec4(canvas.rgb, 1.0);
}
