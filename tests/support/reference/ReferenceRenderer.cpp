#include "reference/ReferenceRenderer.h"

#include "reference/Blending.h"
#include "reference/Filters.h"
#include "reference/Raster.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace lumo::reference {

namespace {

using desktop::Area;

class Rendering {
  public:
    Rendering(const desktop::Picture &beneath, const LayerTree &tree, double scale)
        : beneath_(beneath)
        , tree_(tree)
        , scale_(scale)
        , canvas_(beneath.width(), beneath.height()) {}

    Raster draw() {
        for (const auto &layer : tree_.layers) {
            if (layer.opacity > 0) {
                drawLayer(layer);
            }
        }
        if (tree_.mask) {
            applyMask(*tree_.mask);
        }
        return std::move(canvas_);
    }

  private:
    // Edges at the nearest pixels; from y up to y down.
    Area pixels(const Rect &inView) const {
        const auto edge = [&](double points) {
            return static_cast<int>(std::lround(points * scale_));
        };
        const int left = edge(inView.x - tree_.bounds.x);
        const int right = edge(inView.maxX() - tree_.bounds.x);
        const int top = canvas_.height() - edge(inView.maxY() - tree_.bounds.y);
        const int bottom = canvas_.height() - edge(inView.y - tree_.bounds.y);
        return {left, top, right - left, bottom - top};
    }

    void drawLayer(const Layer &layer) {
        const Area frame = pixels(layer.frame);
        if (frame.width <= 0 || frame.height <= 0) {
            return;
        }
        const Raster drawn =
            layer.kind == Layer::Kind::backdrop ? backdrop(layer, frame) : plain(layer, frame);
        for (int y = std::max(frame.y, 0); y < std::min(frame.bottom(), canvas_.height()); ++y) {
            for (int x = std::max(frame.x, 0); x < std::min(frame.right(), canvas_.width()); ++x) {
                canvas_.at(x, y) =
                    blended(canvas_.at(x, y), drawn.at(x - frame.x, y - frame.y) * layer.opacity,
                            layer.blendMode);
            }
        }
    }

    Raster backdrop(const Layer &layer, const Area &frame) const {
        Raster seen(frame.width, frame.height);
        for (int y = 0; y < frame.height; ++y) {
            for (int x = 0; x < frame.width; ++x) {
                if (beneath_.area().contains(x + frame.x, y + frame.y)) {
                    const auto colour = beneath_.at(x + frame.x, y + frame.y);
                    seen.at(x, y) = {colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0,
                                     1};
                }
            }
        }
        return filtered(std::move(seen), layer.filters, scale_);
    }

    static Raster plain(const Layer &layer, const Area &frame) {
        const auto &color = layer.backgroundColor;
        const Pixel background = Pixel{color.red, color.green, color.blue, 1} * color.alpha;
        Raster result(frame.width, frame.height);
        for (int y = 0; y < frame.height; ++y) {
            for (int x = 0; x < frame.width; ++x) {
                result.at(x, y) = layer.contents ? blended(background, sample(layer, frame, x, y),
                                                           BlendMode::normal)
                                                 : background;
            }
        }
        return result;
    }

    static Pixel texel(const Image &image, int x, int y) {
        const auto column = static_cast<std::size_t>(std::clamp(x, 0, image.width - 1));
        const auto row = static_cast<std::size_t>(std::clamp(y, 0, image.height - 1));
        const auto *at =
            image.pixels.data() + 4 * (row * static_cast<std::size_t>(image.width) + column);
        return {at[0] / 255.0, at[1] / 255.0, at[2] / 255.0, at[3] / 255.0};
    }

    static Pixel sample(const Layer &layer, const Area &frame, int x, int y) {
        const Image &image = *layer.contents;
        const double u = (x + 0.5) * image.width / frame.width;
        const double v = (y + 0.5) * image.height / frame.height;
        const bool shrinks = image.width > frame.width || image.height > frame.height;
        if ((shrinks ? layer.minificationFilter : layer.magnificationFilter) == Sampling::nearest) {
            return texel(image, static_cast<int>(u), static_cast<int>(v));
        }
        const int left = static_cast<int>(std::floor(u - 0.5));
        const int top = static_cast<int>(std::floor(v - 0.5));
        const double right = u - 0.5 - left;
        const double bottom = v - 0.5 - top;
        return (texel(image, left, top) * (1 - right) + texel(image, left + 1, top) * right) *
                   (1 - bottom) +
               (texel(image, left, top + 1) * (1 - right) +
                texel(image, left + 1, top + 1) * right) *
                   bottom;
    }

    void applyMask(const EvenOddMask &mask) {
        std::vector<Area> areas;
        for (const auto &rectangle : mask.rectangles) {
            areas.push_back(pixels(rectangle));
        }
        for (int y = 0; y < canvas_.height(); ++y) {
            for (int x = 0; x < canvas_.width(); ++x) {
                const auto count = std::ranges::count_if(
                    areas, [&](const Area &area) { return area.contains(x, y); });
                if (count % 2 == 0) {
                    canvas_.at(x, y) = {};
                }
            }
        }
    }

    const desktop::Picture &beneath_;
    const LayerTree &tree_;
    double scale_;
    Raster canvas_;
};

std::uint8_t over(std::uint8_t beneath, double source, double alpha, double opacity) {
    return static_cast<std::uint8_t>(
        std::lround(source * opacity * 255 + beneath * (1 - alpha * opacity)));
}

} // namespace

desktop::Picture render(const desktop::Picture &beneath, const LayerTree &tree, double scale,
                        double windowAlpha) {
    const Raster layers = Rendering(beneath, tree, scale).draw();
    const double opacity = tree.viewAlpha * windowAlpha;
    desktop::Picture shown = beneath;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x) {
            const Pixel &pixel = layers.at(x, y);
            auto &colour = shown.at(x, y);
            colour = {over(colour.red, pixel.red, pixel.alpha, opacity),
                      over(colour.green, pixel.green, pixel.alpha, opacity),
                      over(colour.blue, pixel.blue, pixel.alpha, opacity)};
        }
    }
    return shown;
}

} // namespace lumo::reference
