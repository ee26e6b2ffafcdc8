#include "platform/x11/painting/LinesPainter.h"

#include "platform/x11/painting/LayerGroup.h"
#include "platform/x11/server/OverlaySurface.h"
#include "platform/x11/server/ProtocolRectangle.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>
#include <vector>

namespace lumo::x11 {

namespace {

// Its components premultiplied.
Color over(const Color &upper, const Color &lower) {
    const double left = 1 - upper.alpha;
    return {upper.red + lower.red * left, upper.green + lower.green * left,
            upper.blue + lower.blue * left, upper.alpha + lower.alpha * left};
}

Color scaled(const Color &color, double factor) {
    return {color.red * factor, color.green * factor, color.blue * factor, color.alpha * factor};
}

// The mean of some of its pixels, premultiplied.
Color meanOf(const Image &image) {
    constexpr std::size_t enough = 4096;
    const std::size_t count = image.pixels.size() / image.bytesPerPixel();
    // Odd, so that columns of all kinds are met.
    const std::size_t step = std::max<std::size_t>(1, count / enough) | 1U;
    Color sum;
    double samples = 0;
    for (std::size_t pixel = 0; pixel < count; pixel += step) {
        const auto at = image.rgbaAt(pixel);
        sum = {sum.red + at[0], sum.green + at[1], sum.blue + at[2], sum.alpha + at[3]};
        ++samples;
    }
    return samples > 0 ? scaled(sum, 1 / (samples * 255)) : Color::clear();
}

// What the layers are on the average, premultiplied.
Color meanOf(const LayerTree &tree) {
    Color mean = Color::clear();
    for (const auto &layer : tree.layers) {
        if (layer.kind != Layer::Kind::plain || layer.opacity <= 0) {
            continue;
        }
        const auto &background = layer.backgroundColor;
        Color own = {background.red * background.alpha, background.green * background.alpha,
                     background.blue * background.alpha, background.alpha};
        if (layer.contents) {
            own = over(meanOf(*layer.contents), own);
        }
        mean = over(scaled(own, layer.opacity), mean);
    }
    return mean;
}

} // namespace

LinesPainter::LinesPainter(Connection &connection, OverlaySurface &window)
    : connection_(connection)
    , window_(window) {
}

LinesPainter::~LinesPainter() {
    window_.setPattern({});
}

void LinesPainter::paint(const drawing::PlacedLayers &appearance, std::function<void()> painted) {
    if (painted_ != appearance) {
        const auto mean = meanOf(appearance.tree);
        const std::uint32_t background =
            pixelOf(mean.alpha > 0 ? scaled(mean, 1 / mean.alpha) : Color::clear());
        xcb_change_window_attributes(connection_, window_.id(), XCB_CW_BACK_PIXEL, &background);
        lines_ = linesOf(appearance, std::clamp(mean.alpha * appearance.alpha, 0.0, 1.0));
        painted_ = appearance;
        isPresented_ = false;
    }
    painted();
}

void LinesPainter::present() {
    if (!std::exchange(isPresented_, true)) {
        window_.setPattern(std::move(lines_));
        xcb_clear_area(connection_, 0, window_.id(), 0, 0, 0, 0);
    }
}

OwnedRegion LinesPainter::linesOf(const drawing::PlacedLayers &appearance, double opacity) const {
    const auto &area = appearance.area;
    std::vector<drawing::PixelRect> lines;
    for (int row = 0; row < area.height; ++row) {
        if (std::floor((row + 1) * opacity) > std::floor(row * opacity)) {
            lines.push_back({0, row, area.width, 1});
        }
    }
    const auto rectangles = toProtocol(drawing::Region(lines) - appearance.maskedOut());
    OwnedRegion region(connection_);
    xcb_xfixes_create_region(connection_, region.id(),
                             static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
    return region;
}

std::uint32_t LinesPainter::pixelOf(const Color &color) const {
    const auto *visual = connection_.visual(window_.visual());
    if (visual == nullptr) {
        return 0;
    }
    const auto channel = [](double value, std::uint32_t mask) {
        const auto largest = static_cast<double>(mask >> std::countr_zero(mask));
        return static_cast<std::uint32_t>(std::lround(std::clamp(value, 0.0, 1.0) * largest))
               << std::countr_zero(mask);
    };
    // Bits of no colour are alpha or unused.
    const auto other = ~(visual->red_mask | visual->green_mask | visual->blue_mask);
    return channel(color.red, visual->red_mask) | channel(color.green, visual->green_mask) |
           channel(color.blue, visual->blue_mask) | (window_.depth() == 32 ? other : 0U);
}

} // namespace lumo::x11
