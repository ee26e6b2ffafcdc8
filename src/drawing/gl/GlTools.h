#pragma once

#include "drawing/Region.h"
#include "drawing/gl/GlProgram.h"
#include "drawing/gl/GlTexture.h"
#include "platform/LayerTree.h"

#include <array>
#include <memory>
#include <vector>

namespace lumo::drawing {

// What the drawings of all displays share in one OpenGL context, which is current whenever any of
// it is used.
class GlTools {
  public:
    GlTools();
    ~GlTools();
    GlTools(const GlTools &) = delete;
    GlTools &operator=(const GlTools &) = delete;

    bool areUsable() const;

    GlProgram downsample;
    GlProgram blur;
    GlProgram compose;

    // A texture of that size for intermediate results, beyond whose edges there is nothing, bound.
    static GlTexture makeTexture(int width, int height);

    // An image's pixels, sent to the graphics hardware once for as long as the image lives. The
    // first row is the first one.
    const GlTexture &textureOf(const std::shared_ptr<const Image> &image);

    // Has what follows drawn into a texture of that size, or into the current target, in whose
    // pixels the origin is at the top left.
    void drawInto(const GlTexture &texture, int width, int height);
    void drawIntoTarget(int width, int height);

    // Draws a region with the program in use.
    void draw(GlProgram &program, const Region &region);

  private:
    struct ImageTexture {
        std::weak_ptr<const Image> image;
        GlTexture texture;
    };

    GLuint framebuffer_ = 0;
    GLuint vertices_ = 0;
    GLuint layout_ = 0;
    std::array<float, 4> toClip_ = {};
    std::vector<ImageTexture> images_;
};

} // namespace lumo::drawing
