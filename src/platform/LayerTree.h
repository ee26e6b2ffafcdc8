#pragma once

#include "support/Geometry.h"
#include "support/Value.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace lumo {

// Red, green, blue and alpha, 0 to 1 each, not premultiplied.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;

    static constexpr Color clear() { return {}; }
    static constexpr Color black() { return {0, 0, 0, 1}; }
    static constexpr Color white() { return {1, 1, 1, 1}; }

    bool operator==(const Color &) const = default;
};

// Pixels in rows from the top, rows without padding.
struct Image {
    enum class Format {
        rgba, // four bytes each: red, green, blue, alpha, premultiplied
        grey, // one byte each, opaque
    };

    int width = 0;
    int height = 0;
    Bytes pixels;
    Format format = Format::rgba;

    std::size_t bytesPerPixel() const { return format == Format::rgba ? 4 : 1; }

    // Whether the pixels are all there, and at least one is.
    bool isWhole() const {
        return width > 0 && height > 0 &&
               pixels.size() / bytesPerPixel() / static_cast<std::size_t>(width) >=
                   static_cast<std::size_t>(height);
    }

    // Red, green, blue and alpha of the pixel at that place in the rows.
    std::array<std::uint8_t, 4> rgbaAt(std::size_t pixel) const {
        const auto *at = &pixels[pixel * bytesPerPixel()];
        return format == Format::rgba ? std::array{at[0], at[1], at[2], at[3]}
                                      : std::array<std::uint8_t, 4>{*at, *at, *at, 255};
    }
};

// A filter of what a backdrop layer shows, with its one parameter.
struct Filter {
    enum class Type {
        gaussianBlur, // the standard deviation in points; weights are normalised at the edges
        brightness,   // what is added to each channel
        saturation,   // the factor of the distance from the luma
        contrast,     // the factor of the distance from one half
    };

    Type type = Type::gaussianBlur;
    double amount = 0;

    bool operator==(const Filter &) const = default;
};

// How a layer is blended with what the layers under it have drawn: by the W3C compositing formulas,
// the backdrop's alpha included. Over an empty backdrop all of them are plain source-over.
enum class BlendMode { normal, overlay, softLight };

enum class Sampling { linear, nearest };

// One layer, as a value. Frames are in points in the view's coordinates: origin at the bottom left,
// y up.
struct Layer {
    enum class Kind {
        plain,    // draws its background colour, then its contents
        backdrop, // draws what the window server shows behind the window, through its filters
    };

    Kind kind = Kind::plain;
    Rect frame;
    float opacity = 1;
    Color backgroundColor = Color::clear();
    bool masksToBounds = false;

    // Drawn to fill the frame. Compared by identity: an image never changes once it is shared.
    std::shared_ptr<const Image> contents;
    double contentsScale = 1;
    Sampling minificationFilter = Sampling::linear;
    Sampling magnificationFilter = Sampling::linear;

    BlendMode blendMode = BlendMode::normal;

    // Of a backdrop layer: applied in order to what it shows, and at how many pixels per point that
    // is sampled.
    std::vector<Filter> filters;
    double backdropScale = 1;

    bool operator==(const Layer &) const = default;
};

// Shows the view only where a point lies in an odd number of the rectangles.
struct EvenOddMask {
    Rect frame;
    std::vector<Rect> rectangles;

    bool operator==(const EvenOddMask &) const = default;
};

// All that one overlay shows. Drawn from the bottom layer to the top, each premultiplied; then the
// mask, then the view's alpha, then the window's own alpha.
struct LayerTree {
    Rect bounds;
    double viewAlpha = 1;
    std::vector<Layer> layers;
    std::optional<EvenOddMask> mask;

    bool operator==(const LayerTree &) const = default;
};

// True when a backdrop layer of the tree contributes to the picture.
bool showsBackdrop(const LayerTree &tree);

} // namespace lumo
