#pragma once

#include "drawing/PixelGrid.h"
#include "drawing/PixelKernels.h"
#include "drawing/PixelRect.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace lumo::drawing {

// Grey values, one byte each, in rows from the top without padding; channelSlack more bytes follow
// the last.
struct GrainPlane {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> values;
};

// A live copy of what lies behind a view, blurred and coloured.
struct Backdrop {
    double deviation = 0; // of the Gaussian, in pixels
    ColorMatrix matrix;
    Blend blend = Blend::normal;
    float opacity = 1; // above 0

    bool operator==(const Backdrop &) const = default;
};

// What is drawn over what lies behind a view, all of it as large as the view.
struct Material {
    std::vector<Backdrop> backdrops; // from the bottom to the top, at least one

    // Blended over them as an "overlay"; of the view's size. None when null.
    std::shared_ptr<const GrainPlane> grain;
    float grainOpacity = 0;

    // Laid over that as it is; not drawn with opacity 0.
    std::array<float, 3> color{};
    float colorOpacity = 0;

    bool operator==(const Material &) const = default;
};

// Draws a material from a downsampled copy of what lies behind a view: one texel for each square of
// texelSize() by texelSize() pixels, counted from the view's top left, with the mean of its pixels.
// Where such a square reaches beyond the view the mean counts what is outside as black.
//
// The blur is a Gaussian cut off at three deviations or a little more, with weights normalised over
// what lies within the view; its cost hardly depends on the deviation, since the wider it is, the
// coarser the grid on which it is computed. One and the same picture comes out however it is
// divided into parts. Keeps no picture. Any thread, one at a time.
class MaterialRenderer {
  public:
    // The view's size in pixels, at least 1 each way.
    MaterialRenderer(int width, int height, Material material);

    const Material &material() const { return material_; }
    int texelSize() const { return 1 << texelShift_; }

    // Pixels that lie further than this from a change change no more than can be seen.
    int reach() const;

    // How opaque the result is as a whole, over what lies behind the view.
    float opacity() const { return opacity_; }

    // The texels from which that part of the view, which is not empty, is drawn.
    PixelRect texelsFor(const PixelRect &pixels) const;

    // Draws the part from those texels. Texels and pixels have four bytes: blue, green, red, and
    // one that has no meaning in texels and is 255 in pixels. The rows are as long as said, in
    // bytes.
    void render(const PixelRect &part, const std::uint8_t *texels, std::size_t texelStride,
                std::uint8_t *pixels, std::size_t pixelStride) const;

  private:
    // How one backdrop is computed.
    struct Plan {
        int halvings = 0;           // from the texels to the grid on which it is blurred
        std::vector<float> weights; // of the kernel there, from the centre outwards
    };

    struct Texels {
        Range columns;
        Range rows;
    };

    static Plan planFor(double deviation, int texelShift);
    static Range inputFor(const Plan &plan, Range texels);
    Texels shownTexels(const PixelRect &part) const;
    std::vector<float> normalisation(const Plan &plan, int pixels, const Range &range) const;
    PixelGrid load(const Texels &needed, const PixelRect &available, const std::uint8_t *texels,
                   std::size_t texelStride) const;
    PixelGrid convolved(const PixelGrid &source, const Plan &plan, const Texels &at) const;
    PixelGrid blurred(const PixelGrid &input, const Plan &plan, const Texels &shown) const;
    PixelGrid composed(const PixelGrid &input, const Texels &shown) const;
    void upsample(const PixelGrid &composed, const PixelRect &part, std::uint8_t *pixels,
                  std::size_t pixelStride) const;

    int width_;
    int height_;
    Material material_;
    int texelShift_ = 0;
    int columns_ = 0;
    int rows_ = 0;
    float opacity_ = 0;
    std::vector<Plan> plans_; // one for each backdrop
};

} // namespace lumo::drawing
