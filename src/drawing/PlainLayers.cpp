#include "drawing/PlainLayers.h"

#include "drawing/PremultipliedColor.h"

#include <pixman.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <numeric>
#include <vector>

namespace lumo::drawing {

namespace {

struct Unreference {
    void operator()(pixman_image_t *image) const noexcept { pixman_image_unref(image); }
};
using PixmanImage = std::unique_ptr<pixman_image_t, Unreference>;

pixman_op_t operatorOf(BlendMode mode) {
    switch (mode) {
    case BlendMode::overlay:
        return PIXMAN_OP_OVERLAY;
    case BlendMode::softLight:
        return PIXMAN_OP_SOFT_LIGHT;
    case BlendMode::normal:
        break;
    }
    return PIXMAN_OP_OVER;
}

bool isDrawn(const Layer &layer) {
    return layer.kind == Layer::Kind::plain && layer.opacity > 0;
}

PixmanImage solid(const pixman_color_t &color) {
    return PixmanImage(pixman_image_create_solid_fill(&color));
}

// Without pixels of the caller's, it has transparent ones of its own.
PixmanImage canvasOf(int width, int height, std::uint32_t *pixels) {
    return PixmanImage(pixman_image_create_bits(PIXMAN_a8r8g8b8, width, height, pixels, width * 4));
}

void clip(pixman_image_t *canvas, const Region &part) {
    std::vector<pixman_box32_t> boxes;
    for (const auto &rectangle : part.rectangles()) {
        boxes.push_back({rectangle.x, rectangle.y, rectangle.maxX(), rectangle.maxY()});
    }
    pixman_region32_t region;
    pixman_region32_init_rects(&region, boxes.data(), static_cast<int>(boxes.size()));
    pixman_image_set_clip_region32(canvas, &region);
    pixman_region32_fini(&region);
}

void compose(pixman_op_t blend, pixman_image_t *source, pixman_image_t *mask, pixman_image_t *onto,
             const PixelRect &frame) {
    pixman_image_composite32(blend, source, mask, onto, 0, 0, 0, 0, frame.x, frame.y, frame.width,
                             frame.height);
}

// A part of an image as pixels that can be composed.
struct Cutting {
    Cutting(const Image &image, const PixelRect &area)
        : pixels(static_cast<std::size_t>(area.width) * static_cast<std::size_t>(area.height)) {
        auto to = pixels.begin();
        for (int y = area.y; y < area.maxY(); ++y) {
            const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width);
            for (int x = area.x; x < area.maxX(); ++x) {
                const auto [red, green, blue, alpha] =
                    image.rgbaAt(row + static_cast<std::size_t>(x));
                *to++ = std::uint32_t{alpha} << 24U | std::uint32_t{red} << 16U |
                        std::uint32_t{green} << 8U | blue;
            }
        }
        picture = canvasOf(area.width, area.height, pixels.data());
    }

    std::vector<std::uint32_t> pixels;
    PixmanImage picture;
};

class Drawing {
  public:
    Drawing(const PlacedLayers &appearance, const Region &part, pixman_image_t *canvas)
        : appearance_(appearance)
        , part_(part)
        , canvas_(canvas) {
        for (const auto &rectangle : part.rectangles()) {
            extents_ = extents_.united(rectangle);
        }
    }

    void draw() {
        for (const auto &layer : appearance_.tree.layers) {
            if (isDrawn(layer)) {
                drawLayer(layer);
            }
        }
        if (appearance_.alpha < 1) {
            const auto alpha = solid({0, 0, 0, channel(appearance_.alpha)});
            compose(PIXMAN_OP_IN_REVERSE, alpha.get(), nullptr, canvas_,
                    {0, 0, appearance_.area.width, appearance_.area.height});
        }
    }

  private:
    void drawLayer(const Layer &layer) {
        const auto frame = appearance_.toWindow(layer.frame);
        const bool hasContents = layer.contents && layer.contents->isWhole();
        const bool hasColor = layer.backgroundColor.alpha > 0;
        if (frame.isEmpty() || !(hasContents || hasColor)) {
            return;
        }
        const auto blend = isEmpty_ ? PIXMAN_OP_OVER : operatorOf(layer.blendMode);
        if (hasContents && hasColor) {
            // Opacity and blend apply to both as one.
            const auto both = canvasOf(appearance_.area.width, appearance_.area.height, nullptr);
            drawColor(layer, frame, PIXMAN_OP_SRC, 1, both.get());
            drawContents(layer, frame, PIXMAN_OP_OVER, 1, both.get());
            const auto mask = solid({0, 0, 0, channel(layer.opacity)});
            compose(blend, both.get(), mask.get(), canvas_,
                    {0, 0, appearance_.area.width, appearance_.area.height});
        } else if (hasContents) {
            drawContents(layer, frame, blend, layer.opacity, canvas_);
        } else {
            drawColor(layer, frame, blend, layer.opacity, canvas_);
        }
        isEmpty_ = false;
    }

    static void drawColor(const Layer &layer, const PixelRect &frame, pixman_op_t blend,
                          double opacity, pixman_image_t *onto) {
        const auto color = solid(premultiplied<pixman_color_t>(layer.backgroundColor, opacity));
        compose(blend, color.get(), nullptr, onto, frame);
    }

    void drawContents(const Layer &layer, const PixelRect &frame, pixman_op_t blend, double opacity,
                      pixman_image_t *onto) const {
        const auto &image = *layer.contents;
        const auto mask = opacity < 1 ? solid({0, 0, 0, channel(opacity)}) : nullptr;
        if (image.width != frame.width || image.height != frame.height) {
            const Cutting all(image, {0, 0, image.width, image.height});
            scale(all.picture.get(), layer, frame);
            compose(blend, all.picture.get(), mask.get(), onto, frame);
            return;
        }
        constexpr int bandHeight = 64; // little enough for the processor's caches
        const auto drawn = extents_.intersection(frame);
        for (int y = drawn.y; y < drawn.maxY(); y += bandHeight) {
            const PixelRect band = {drawn.x, y, drawn.width,
                                    std::min(bandHeight, drawn.maxY() - y)};
            if (part_.overlaps(band)) {
                const Cutting cutting(image,
                                      {band.x - frame.x, y - frame.y, band.width, band.height});
                compose(blend, cutting.picture.get(), mask.get(), onto, band);
            }
        }
    }

    static void scale(pixman_image_t *source, const Layer &layer, const PixelRect &frame) {
        const auto &image = *layer.contents;
        pixman_transform_t transform;
        pixman_transform_init_scale(
            &transform, pixman_double_to_fixed(static_cast<double>(image.width) / frame.width),
            pixman_double_to_fixed(static_cast<double>(image.height) / frame.height));
        pixman_image_set_transform(source, &transform);
        const bool shrinks = image.width > frame.width || image.height > frame.height;
        const auto sampling = shrinks ? layer.minificationFilter : layer.magnificationFilter;
        pixman_image_set_filter(
            source, sampling == Sampling::nearest ? PIXMAN_FILTER_NEAREST : PIXMAN_FILTER_BILINEAR,
            nullptr, 0);
        // So that linear sampling does not fade out towards the frame's edges.
        pixman_image_set_repeat(source, PIXMAN_REPEAT_PAD);
    }

    const PlacedLayers &appearance_;
    const Region &part_;
    PixelRect extents_; // of the part
    pixman_image_t *canvas_;
    bool isEmpty_ = true; // over nothing every blend is the plain one
};

void drawAnyLayers(const PlacedLayers &appearance, const Region &part, std::uint32_t *pixels) {
    clear(part, appearance.area.width, appearance.area.height, pixels);
    const auto canvas = canvasOf(appearance.area.width, appearance.area.height, pixels);
    clip(canvas.get(), part);
    Drawing(appearance, part, canvas.get()).draw();
}

// The one image that the picture depends on, where every layer that is drawn covers the whole area
// and no other shows one: grey, a pixel for each of the area's. Absent for every other picture.
const Image *onlyGreyImage(const PlacedLayers &appearance) {
    const PixelRect whole = {0, 0, appearance.area.width, appearance.area.height};
    const Image *only = nullptr;
    for (const auto &layer : appearance.tree.layers) {
        if (!isDrawn(layer)) {
            continue;
        }
        const auto *image = layer.contents.get();
        const bool fits =
            image == nullptr ||
            (only == nullptr && image->isWhole() && image->format == Image::Format::grey &&
             image->width == whole.width && image->height == whole.height);
        if (!fits || appearance.toWindow(layer.frame) != whole) {
            return nullptr;
        }
        only = image != nullptr ? image : only;
    }
    return only;
}

using PixelsByGrey = std::array<std::uint32_t, 256>;

// What the picture shows wherever its only image has that grey.
PixelsByGrey pixelsByGrey(const PlacedLayers &appearance) {
    PixelsByGrey pixels{};
    auto ramp = std::make_shared<Image>();
    ramp->width = static_cast<int>(pixels.size());
    ramp->height = 1;
    ramp->format = Image::Format::grey;
    ramp->pixels.resize(pixels.size());
    std::iota(ramp->pixels.begin(), ramp->pixels.end(), std::uint8_t{0});

    PlacedLayers sample = appearance;
    sample.area = {0, 0, ramp->width, ramp->height};
    sample.space = PointSpace({sample.area}, 1);
    sample.frame = sample.space.screenFrame(sample.area);
    sample.tree.bounds = sample.frame;
    for (auto &layer : sample.tree.layers) {
        layer.frame = sample.frame;
        if (layer.contents) {
            layer.contents = ramp;
        }
    }
    drawAnyLayers(sample, sample.area, pixels.data());
    return pixels;
}

} // namespace

void drawPlainLayers(const PlacedLayers &appearance, const Region &part, std::uint32_t *pixels) {
    const auto *image = onlyGreyImage(appearance);
    if (image == nullptr) {
        drawAnyLayers(appearance, part, pixels);
        return;
    }
    const auto byGrey = pixelsByGrey(appearance);
    for (const auto &rectangle : part.rectangles()) {
        const auto within = rectangle.intersection({0, 0, image->width, image->height});
        for (int y = within.y; y < within.maxY(); ++y) {
            const auto row = static_cast<std::ptrdiff_t>(y) * image->width + within.x;
            std::transform(image->pixels.begin() + row,
                           image->pixels.begin() + row + std::max(within.width, 0), pixels + row,
                           [&](std::uint8_t grey) { return byGrey[grey]; });
        }
    }
}

void clear(const Region &part, int width, int height, std::uint32_t *pixels) {
    for (const auto &rectangle : part.rectangles()) {
        const auto within = rectangle.intersection({0, 0, width, height});
        for (int y = within.y; y < within.maxY(); ++y) {
            auto *row = pixels + static_cast<std::ptrdiff_t>(y) * width;
            std::fill_n(row + within.x, std::max(within.width, 0), 0U);
        }
    }
}

} // namespace lumo::drawing
