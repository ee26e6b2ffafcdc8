#pragma once

#include <epoxy/gl.h>

#include <utility>

namespace lumo::drawing {

// An OpenGL texture of two dimensions. Move-only; its context is current when it ends.
class GlTexture {
  public:
    GlTexture() = default;

    static GlTexture make() {
        GlTexture texture;
        glGenTextures(1, &texture.name_);
        return texture;
    }

    ~GlTexture() {
        if (name_ != 0) {
            glDeleteTextures(1, &name_);
        }
    }

    GlTexture(GlTexture &&other) noexcept
        : name_(std::exchange(other.name_, 0)) {}
    GlTexture &operator=(GlTexture &&other) noexcept {
        std::swap(name_, other.name_);
        return *this;
    }
    GlTexture(const GlTexture &) = delete;
    GlTexture &operator=(const GlTexture &) = delete;

    // To that unit, and for the calls about the bound texture.
    void bindTo(GLenum unit) const {
        glActiveTexture(GL_TEXTURE0 + unit);
        glBindTexture(GL_TEXTURE_2D, name_);
    }

    GLuint name() const { return name_; }
    explicit operator bool() const { return name_ != 0; }

  private:
    GLuint name_ = 0;
};

} // namespace lumo::drawing
