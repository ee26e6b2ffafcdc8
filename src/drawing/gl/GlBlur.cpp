#include "drawing/gl/GlBlur.h"

#include "drawing/gl/GlSurface.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

namespace lumo::drawing {

namespace {

// Texture units.
constexpr GLint sceneUnit = 0;
constexpr GLint firstLayerUnit = 1;

// As many as the shader has room for.
constexpr std::size_t mostTaps = 32;

int dividedUp(int value, int divisor) {
    return (value + divisor - 1) / divisor;
}

// The texels of a grid from which the damaged pixels are drawn: with one more to each side for
// linear interpolation. There is a margin of one texel around the grid.
Region texels(const Region &damage, int factor, int width, int height) {
    std::vector<PixelRect> result;
    for (const auto &part : damage.rectangles()) {
        const int left = part.x / factor;
        const int top = part.y / factor;
        result.push_back({left, top, dividedUp(part.maxX(), factor) + 2 - left,
                          dividedUp(part.maxY(), factor) + 2 - top});
    }
    return Region(result) & PixelRect{0, 0, width, height};
}

// Two neighbouring texels are fetched at once, by sampling between them.
void setWeights(GlProgram &program, const BlurGrid &blur) {
    std::vector<double> weights;
    double all = -1;
    for (int distance = 0; distance <= blur.radius + 1; ++distance) {
        const double reduced = distance / blur.deviation;
        weights.push_back(distance <= blur.radius ? std::exp(-0.5 * reduced * reduced) : 0);
        all += 2 * weights.back();
    }
    std::vector<float> taps;
    for (std::size_t near = 1; near <= static_cast<std::size_t>(blur.radius); near += 2) {
        const double both = weights[near] + weights[near + 1];
        taps.push_back(static_cast<float>(static_cast<double>(near) + weights[near + 1] / both));
        taps.push_back(static_cast<float>(both / all));
    }
    const auto count = std::min(taps.size() / 2, mostTaps);
    glUniform1f(program["centre"], static_cast<float>(1 / all));
    glUniform1i(program["tapCount"], static_cast<GLint>(count));
    glUniform2fv(program["taps"], static_cast<GLsizei>(count), taps.data());
}

void setSize(GLint uniform, int width, int height) {
    glUniform2f(uniform, static_cast<float>(width), static_cast<float>(height));
}

void setMatrix(GlProgram &program, const std::string &prefix,
               const BackdropFilters::Matrix &matrix) {
    std::array<float, 9> factors{};
    std::array<float, 3> added{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            factors[3 * row + column] = static_cast<float>(matrix[row][column]);
        }
        added[row] = static_cast<float>(matrix[row][3]);
    }
    glUniformMatrix3fv(program[prefix + "matrix"], 1, GL_TRUE, factors.data());
    glUniform3fv(program[prefix + "offset"], 1, added.data());
}

} // namespace

GlBlur::GlBlur(GlTools &tools)
    : tools_(tools)
    , scene_(GlTexture::make()) {
    scene_.bindTo(sceneUnit);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

bool GlBlur::draw(const GlFrame &frame, GlSurface &surface) {
    if (!surface.makeCurrent()) {
        // What has failed is not to count for the next frame.
        surface.finish();
        return false;
    }
    adopt(frame);
    scene_.bindTo(sceneUnit);
    surface.bindScene();
    const bool isUpsideDown = surface.isSceneUpsideDown();
    downsample(frame, isUpsideDown);
    blurAll(frame.damage);
    compose(frame, isUpsideDown);
    scene_.bindTo(sceneUnit);
    surface.releaseScene();
    return surface.finish();
}

void GlBlur::adopt(const GlFrame &frame) {
    const bool isSameSize = frame.width == adopted_.width && frame.height == adopted_.height;
    const bool isSamePlan = isSameSize && frame.layers == adopted_.layers;
    adopted_ = {frame.width, frame.height, frame.layers, {}};
    if (!isSameSize) {
        downsampled_.clear();
        blurred_.clear();
    }
    if (!isSamePlan) {
        planBlurs();
    }
}

GlBlur::Grid GlBlur::makeGrid(int factor) const {
    const int width = dividedUp(adopted_.width, factor) + 2;
    const int height = dividedUp(adopted_.height, factor) + 2;
    return {factor, width, height, GlTools::makeTexture(width, height)};
}

void GlBlur::planBlurs() {
    auto blurredBefore = std::exchange(blurred_, {});
    auto downsampledBefore = std::exchange(downsampled_, {});
    for (const auto &layer : adopted_.layers->layers) {
        if (!layer.backdrop || layer.backdrop->deviation <= 0) {
            continue;
        }
        const auto blur = blurGrid(layer.backdrop->deviation);
        const auto index = blurred_.size();
        if (index < blurredBefore.size() && blurredBefore[index].blur.factor == blur.factor) {
            blurred_.push_back(std::move(blurredBefore[index]));
            blurred_.back().blur = blur;
        } else {
            blurred_.push_back({blur, makeGrid(blur.factor), makeGrid(blur.factor)});
        }
        if (auto known = downsampledBefore.extract(blur.factor)) {
            downsampled_.insert(std::move(known));
        } else if (!downsampled_.contains(blur.factor)) {
            downsampled_.emplace(blur.factor, makeGrid(blur.factor));
        }
    }
}

void GlBlur::downsample(const GlFrame &frame, bool isUpsideDown) {
    auto &program = tools_.downsample;
    program.use();
    glUniform1i(program["source"], sceneUnit);
    setSize(program["sourceSize"], frame.width, frame.height);
    glUniform1f(program["firstBlock"], 0);
    glUniform1i(program["isOpaque"], 1);
    glUniform1i(program["isUpsideDown"], isUpsideDown ? 1 : 0);
    int factor = 1;
    for (const auto &[gridFactor, grid] : downsampled_) {
        glUniform1f(program["ratio"], static_cast<float>(gridFactor) / static_cast<float>(factor));
        tools_.drawInto(grid.texture, grid.width, grid.height);
        tools_.draw(program, texels(frame.damage, gridFactor, grid.width, grid.height));
        // The next is made from this one.
        factor = gridFactor;
        grid.texture.bindTo(firstLayerUnit);
        glUniform1i(program["source"], firstLayerUnit);
        setSize(program["sourceSize"], grid.width, grid.height);
        glUniform1f(program["firstBlock"], 1);
        glUniform1i(program["isOpaque"], 0);
        glUniform1i(program["isUpsideDown"], 0);
    }
}

void GlBlur::blurAll(const Region &damage) {
    tools_.blur.use();
    glUniform1i(tools_.blur["source"], firstLayerUnit);
    for (const auto &[blur, across, whole] : blurred_) {
        blurPass(blur, downsampled_.at(blur.factor), across, 1, 0, damage);
        blurPass(blur, across, whole, 0, 1, damage);
    }
}

void GlBlur::blurPass(const BlurGrid &blur, const Grid &from, const Grid &to, float dx, float dy,
                      const Region &damage) {
    auto &program = tools_.blur;
    from.texture.bindTo(firstLayerUnit);
    setSize(program["sourceSize"], from.width, from.height);
    glUniform2f(program["direction"], dx, dy);
    setWeights(program, blur);
    tools_.drawInto(to.texture, to.width, to.height);
    tools_.draw(program, texels(damage, to.factor, to.width, to.height));
}

void GlBlur::compose(const GlFrame &frame, bool isUpsideDown) {
    auto &program = tools_.compose;
    program.use();
    glUniform1i(program["scene"], sceneUnit);
    setSize(program["sceneSize"], frame.width, frame.height);
    glUniform1i(program["isUpsideDown"], isUpsideDown ? 1 : 0);
    setLayers();
    tools_.drawIntoTarget(frame.width, frame.height);
    tools_.draw(program, frame.damage - frame.layers->maskedOut);
    glUniform1i(program["layerCount"], 0);
    tools_.draw(program, frame.damage & frame.layers->maskedOut);
}

void GlBlur::setLayers() {
    auto &program = tools_.compose;
    const auto &layers = adopted_.layers->layers;
    glUniform1i(program["layerCount"], static_cast<GLint>(layers.size()));
    glUniform1f(program["alpha"], static_cast<float>(adopted_.layers->alpha));
    auto blurred = blurred_.begin();
    for (std::size_t index = 0; index < layers.size(); ++index) {
        const auto &layer = layers[index];
        const std::string number = "[" + std::to_string(index) + "]";
        const std::string prefix = "layers" + number + ".";
        const auto unit = static_cast<GLenum>(firstLayerUnit) + static_cast<GLenum>(index);
        glUniform1i(program["sources" + number], static_cast<GLint>(unit));
        setLayer(prefix, layer);
        if (layer.image) {
            tools_.textureOf(layer.image).bindTo(unit);
            const GLint filter = layer.sampling == Sampling::nearest ? GL_NEAREST : GL_LINEAR;
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
        } else if (layer.backdrop && layer.backdrop->deviation > 0) {
            setBackdrop(prefix, *layer.backdrop, &*blurred);
            blurred->whole.texture.bindTo(unit);
            ++blurred;
        } else if (layer.backdrop) {
            setBackdrop(prefix, *layer.backdrop, nullptr);
        }
    }
    // Sending an image to the hardware binds its texture in the scene's place.
    scene_.bindTo(sceneUnit);
}

void GlBlur::setLayer(const std::string &prefix, const GlLayer &layer) {
    auto &program = tools_.compose;
    glUniform1i(program[prefix + "kind"], layer.backdrop ? 1 : (layer.image ? 2 : 0));
    glUniform1i(program[prefix + "blend"], static_cast<GLint>(layer.blend));
    glUniform1f(program[prefix + "opacity"], static_cast<float>(layer.opacity));
    const auto &frame = layer.frame;
    glUniform4f(program[prefix + "frame"], static_cast<float>(frame.x), static_cast<float>(frame.y),
                static_cast<float>(frame.width), static_cast<float>(frame.height));
    const auto &color = layer.color;
    glUniform4f(program[prefix + "color"], static_cast<float>(color.red * color.alpha),
                static_cast<float>(color.green * color.alpha),
                static_cast<float>(color.blue * color.alpha), static_cast<float>(color.alpha));
}

void GlBlur::setBackdrop(const std::string &prefix, const BackdropFilters &filters,
                         const Blurred *blurred) {
    auto &program = tools_.compose;
    setMatrix(program, prefix, filters.matrix);
    if (blurred == nullptr) {
        glUniform1f(program[prefix + "factor"], 0);
        return;
    }
    glUniform1f(program[prefix + "factor"], static_cast<float>(blurred->blur.factor));
    setSize(program[prefix + "size"], blurred->whole.width, blurred->whole.height);
}

} // namespace lumo::drawing
