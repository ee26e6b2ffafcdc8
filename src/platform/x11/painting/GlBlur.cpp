#include "platform/x11/painting/GlBlur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <utility>

namespace lumo::x11 {

namespace {

// Texture units.
constexpr GLint sceneUnit = 0;
constexpr GLint firstLayerUnit = 1;

// As many as the shader has room for.
constexpr std::size_t mostTaps = 32;

int dividedUp(int value, int divisor) {
    return (value + divisor - 1) / divisor;
}

// The texels of a grid that the pixels of the parts are drawn from: with one more to each side for
// linear interpolation. There is a margin of one texel around the grid.
drawing::Region texels(const drawing::Region &parts, int factor, int width, int height) {
    std::vector<drawing::PixelRect> result;
    for (const auto &part : parts.rectangles()) {
        const int left = part.x / factor;
        const int top = part.y / factor;
        result.push_back({left, top, dividedUp(part.maxX(), factor) + 2 - left,
                          dividedUp(part.maxY(), factor) + 2 - top});
    }
    return drawing::Region(result) & drawing::PixelRect{0, 0, width, height};
}

// Two neighbours are looked at by one look between them.
void setWeights(drawing::GlProgram &program, const drawing::BlurGrid &blur) {
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

void setMatrix(drawing::GlProgram &program, const std::string &prefix,
               const drawing::BackdropFilters::Matrix &matrix) {
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

GlBlur::GlBlur(GlxDevice &device, drawing::GlTools &tools)
    : device_(device)
    , tools_(tools)
    , scene_(drawing::GlTexture::make()) {
    scene_.bindTo(sceneUnit);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

GlBlur::~GlBlur() {
    releasePixmaps();
}

void GlBlur::releasePixmaps() {
    if (source_ != 0) {
        device_.rest();
        device_.release(std::exchange(source_, 0));
        device_.release(std::exchange(target_, 0));
    }
}

bool GlBlur::adopt(const GlFrame &frame) {
    const bool isSameSize = frame.width == adopted_.width && frame.height == adopted_.height;
    if (!isSameSize || frame.scene != adopted_.scene || frame.canvas != adopted_.canvas) {
        releasePixmaps();
        source_ = device_.makeSource(frame.scene);
        target_ = device_.makeTarget(frame.canvas);
    }
    if (!device_.makeCurrent(target_)) {
        return false;
    }
    const bool isSamePlan = isSameSize && frame.layers == adopted_.layers;
    adopted_ = frame;
    adopted_.parts = {};
    if (!isSameSize) {
        reduced_.clear();
        blurred_.clear();
    }
    if (!isSamePlan) {
        planBlurs();
    }
    return true;
}

GlBlur::Grid GlBlur::makeGrid(int factor) const {
    const int width = dividedUp(adopted_.width, factor) + 2;
    const int height = dividedUp(adopted_.height, factor) + 2;
    return {factor, width, height, drawing::GlTools::makeTexture(width, height)};
}

void GlBlur::planBlurs() {
    auto before = std::exchange(blurred_, {});
    auto reducedBefore = std::exchange(reduced_, {});
    for (const auto &layer : adopted_.layers->layers) {
        if (!layer.backdrop || layer.backdrop->deviation <= 0) {
            continue;
        }
        const auto blur = drawing::blurGrid(layer.backdrop->deviation);
        const auto index = blurred_.size();
        if (index < before.size() && before[index].blur.factor == blur.factor) {
            blurred_.push_back(std::move(before[index]));
            blurred_.back().blur = blur;
        } else {
            blurred_.push_back({blur, makeGrid(blur.factor), makeGrid(blur.factor)});
        }
        if (auto known = reducedBefore.extract(blur.factor)) {
            reduced_.insert(std::move(known));
        } else if (!reduced_.contains(blur.factor)) {
            reduced_.emplace(blur.factor, makeGrid(blur.factor));
        }
    }
}

bool GlBlur::draw(const GlFrame &frame) {
    if (!device_.isConnected()) {
        return false;
    }
    if (!adopt(frame)) {
        device_.finish();
        return false;
    }
    drawScene(frame);
    return device_.finish();
}

void GlBlur::drawScene(const GlFrame &frame) {
    scene_.bindTo(sceneUnit);
    device_.bind(source_);
    reduce(frame.parts);
    blurAll(frame.parts);
    compose(frame.parts);
    scene_.bindTo(sceneUnit);
    device_.unbind(source_);
}

void GlBlur::reduce(const drawing::Region &parts) {
    auto &program = tools_.reduce;
    program.use();
    glUniform1i(program["source"], sceneUnit);
    setSize(program["sourceSize"], adopted_.width, adopted_.height);
    glUniform1f(program["firstBlock"], 0);
    glUniform1i(program["isOpaque"], 1);
    glUniform1i(program["isUpsideDown"], device_.isSourceUpsideDown() ? 1 : 0);
    int factor = 1;
    for (const auto &[gridFactor, grid] : reduced_) {
        glUniform1f(program["ratio"], static_cast<float>(gridFactor) / static_cast<float>(factor));
        tools_.drawInto(grid.texture, grid.width, grid.height);
        tools_.draw(program, texels(parts, gridFactor, grid.width, grid.height));
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

void GlBlur::blurAll(const drawing::Region &parts) {
    tools_.blur.use();
    glUniform1i(tools_.blur["source"], firstLayerUnit);
    for (const auto &[blur, across, whole] : blurred_) {
        blurPass(blur, reduced_.at(blur.factor), across, 1, 0, parts);
        blurPass(blur, across, whole, 0, 1, parts);
    }
}

void GlBlur::blurPass(const drawing::BlurGrid &blur, const Grid &from, const Grid &to, float dx,
                      float dy, const drawing::Region &parts) {
    auto &program = tools_.blur;
    from.texture.bindTo(firstLayerUnit);
    setSize(program["sourceSize"], from.width, from.height);
    glUniform2f(program["direction"], dx, dy);
    setWeights(program, blur);
    tools_.drawInto(to.texture, to.width, to.height);
    tools_.draw(program, texels(parts, to.factor, to.width, to.height));
}

void GlBlur::compose(const drawing::Region &parts) {
    auto &program = tools_.compose;
    program.use();
    glUniform1i(program["scene"], sceneUnit);
    setSize(program["sceneSize"], adopted_.width, adopted_.height);
    glUniform1i(program["isUpsideDown"], device_.isSourceUpsideDown() ? 1 : 0);
    setLayers();
    tools_.drawIntoTarget(adopted_.width, adopted_.height);
    tools_.draw(program, parts - adopted_.layers->maskedOut);
    glUniform1i(program["layerCount"], 0);
    tools_.draw(program, parts & adopted_.layers->maskedOut);
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
        const auto unit = firstLayerUnit + static_cast<GLint>(index);
        glUniform1i(program["sources" + number], unit);
        glUniform1i(program[prefix + "kind"], layer.backdrop ? 1 : (layer.image ? 2 : 0));
        glUniform1i(program[prefix + "blend"], static_cast<GLint>(layer.blend));
        glUniform1f(program[prefix + "opacity"], static_cast<float>(layer.opacity));
        const auto &frame = layer.frame;
        glUniform4f(program[prefix + "frame"], static_cast<float>(frame.x),
                    static_cast<float>(frame.y), static_cast<float>(frame.width),
                    static_cast<float>(frame.height));
        const auto &color = layer.color;
        glUniform4f(program[prefix + "color"], static_cast<float>(color.red * color.alpha),
                    static_cast<float>(color.green * color.alpha),
                    static_cast<float>(color.blue * color.alpha), static_cast<float>(color.alpha));
        if (layer.image) {
            tools_.textureOf(layer.image).bindTo(static_cast<GLenum>(unit));
            const GLint filter = layer.sampling == Sampling::nearest ? GL_NEAREST : GL_LINEAR;
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
            glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
        }
        if (layer.backdrop) {
            setMatrix(program, prefix, layer.backdrop->matrix);
            const bool blurs = layer.backdrop->deviation > 0;
            glUniform1f(program[prefix + "factor"],
                        blurs ? static_cast<float>(blurred->blur.factor) : 0);
            if (blurs) {
                const Grid &grid = blurred->whole;
                setSize(program[prefix + "size"], grid.width, grid.height);
                grid.texture.bindTo(static_cast<GLenum>(unit));
                ++blurred;
            }
        }
    }
    // Sending an image takes its place.
    scene_.bindTo(sceneUnit);
}

} // namespace lumo::x11
