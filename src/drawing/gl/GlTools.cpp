#include "drawing/gl/GlTools.h"

#include "drawing/gl/ShaderSources.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace lumo::drawing {

namespace {

// Whether all pixels are opaque greys, which need a quarter of the memory.
bool isGrey(const Image &image) {
    for (std::size_t at = 0; at + 3 < image.pixels.size(); at += 4) {
        const auto *pixel = image.pixels.data() + at;
        if (pixel[0] != pixel[1] || pixel[0] != pixel[2] || pixel[3] != 0xff) {
            return false;
        }
    }
    return true;
}

void uploadGrey(const Image &image) {
    Bytes greys(image.pixels.size() / 4);
    for (std::size_t at = 0; at < greys.size(); ++at) {
        greys[at] = image.pixels[4 * at];
    }
    glTexImage2D(GL_TEXTURE_2D, 0, GL_R8, image.width, image.height, 0, GL_RED, GL_UNSIGNED_BYTE,
                 greys.data());
    constexpr std::array<GLint, 4> swizzle = {GL_RED, GL_RED, GL_RED, GL_ONE};
    glTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_RGBA, swizzle.data());
}

void sampleBetween(GLint wrap) {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
}

} // namespace

GlTools::GlTools()
    : downsample(shaders::rectangles, shaders::downsample)
    , blur(shaders::rectangles, shaders::blur)
    , compose(shaders::rectangles, shaders::compose) {
    glGenFramebuffers(1, &framebuffer_);
    glGenBuffers(1, &vertices_);
    glGenVertexArrays(1, &layout_);
    glBindVertexArray(layout_);
    glBindBuffer(GL_ARRAY_BUFFER, vertices_);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    glEnableVertexAttribArray(0);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
}

GlTools::~GlTools() {
    glDeleteFramebuffers(1, &framebuffer_);
    glDeleteVertexArrays(1, &layout_);
    glDeleteBuffers(1, &vertices_);
}

bool GlTools::areUsable() const {
    return downsample.isUsable() && blur.isUsable() && compose.isUsable();
}

GlTexture GlTools::makeTexture(int width, int height) {
    auto texture = GlTexture::make();
    texture.bindTo(0);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA16F, width, height, 0, GL_RGBA, GL_HALF_FLOAT, nullptr);
    sampleBetween(GL_CLAMP_TO_BORDER);
    return texture;
}

const GlTexture &GlTools::textureOf(const std::shared_ptr<const Image> &image) {
    std::erase_if(images_, [](const ImageTexture &entry) { return entry.image.expired(); });
    const auto known = std::ranges::find_if(
        images_, [&](const ImageTexture &entry) { return entry.image.lock() == image; });
    if (known != images_.end()) {
        return known->texture;
    }
    auto texture = GlTexture::make();
    texture.bindTo(0);
    if (isGrey(*image)) {
        uploadGrey(*image);
    } else {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image->width, image->height, 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, image->pixels.data());
    }
    sampleBetween(GL_CLAMP_TO_EDGE);
    images_.push_back({image, std::move(texture)});
    return images_.back().texture;
}

void GlTools::drawInto(const GlTexture &texture, int width, int height) {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
    glViewport(0, 0, width, height);
    toClip_ = {2 / static_cast<float>(width), 2 / static_cast<float>(height), -1, -1};
}

void GlTools::drawIntoTarget(int width, int height) {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glViewport(0, 0, width, height);
    // What OpenGL draws into begins at the bottom.
    toClip_ = {2 / static_cast<float>(width), -2 / static_cast<float>(height), -1, 1};
}

void GlTools::draw(GlProgram &program, const Region &region) {
    std::vector<float> corners;
    for (const auto &rectangle : region.rectangles()) {
        const auto left = static_cast<float>(rectangle.x);
        const auto top = static_cast<float>(rectangle.y);
        const auto right = static_cast<float>(rectangle.maxX());
        const auto bottom = static_cast<float>(rectangle.maxY());
        corners.insert(corners.end(), {left, top, right, top, left, bottom, //
                                       left, bottom, right, top, right, bottom});
    }
    if (corners.empty()) {
        return;
    }
    glUniform4fv(program["toClip"], 1, toClip_.data());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(corners.size() * sizeof(float)),
                 corners.data(), GL_STREAM_DRAW);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(corners.size() / 2));
}

} // namespace lumo::drawing
