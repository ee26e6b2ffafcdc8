#include "OverlayDesktop.h"

#include <glib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

namespace lumo::x11 {

namespace {

constexpr double deadline = 10; // seconds

std::shared_ptr<const Image> makeGrain(int width, int height) {
    Image image{width, height, {}};
    std::mt19937 random(1);
    for (int pixel = 0; pixel < width * height; ++pixel) {
        const auto grey = static_cast<std::uint8_t>(43 + random() % 170);
        image.pixels.insert(image.pixels.end(), {grey, grey, grey, 255});
    }
    return std::make_shared<const Image>(std::move(image));
}

} // namespace

OverlayDesktop::OverlayDesktop(const desktop::DesktopOptions &options)
    : MirroredDesktop(options)
    , width(options.width)
    , height(options.height)
    , log_([this](std::string_view line) { lines.emplace_back(line); })
    , screens_{{1, frame(), 1}}
    , grain_(makeGrain(width, height))
    , watch_(loop.watch(*connection, [] {})) {
    overlays = std::unique_ptr<X11OverlayWindows>(new X11OverlayWindows(
        *connection, *mirror, *this,
        [this] {
            return PointSpace({{0, 0, width, height}}, 1);
        },
        loop, log_));
}

bool OverlayDesktop::eventually(const std::function<bool()> &condition) {
    const double end = loop.now() + deadline;
    // So that the condition is looked at again while nothing happens.
    const auto alarm = loop.every(0.005, [] {});
    while (!condition()) {
        if (loop.now() > end) {
            return false;
        }
        g_main_context_iteration(nullptr, TRUE);
    }
    return true;
}

void OverlayDesktop::settle() {
    // Whatever is drawn again is so within one refresh; the second round is for what follows from
    // the first.
    for (int round = 0; round < 2; ++round) {
        bool isOver = false;
        const auto refresh = loop.after(1.0 / 60, [&] {
            connection->whenReplied<xcb_get_input_focus_reply_t>(
                xcb_get_input_focus(*connection), [&](const auto *) { isOver = true; });
        });
        eventually([&] { return isOver && mirror->isSettled(); });
    }
}

LayerTree OverlayDesktop::tree(const Rect &frame, const Look &look) const {
    LayerTree tree;
    tree.bounds = {0, 0, frame.width, frame.height};
    Layer grain;
    grain.frame = tree.bounds;
    grain.opacity = static_cast<float>(look.grain);
    grain.contents = grain_;
    grain.compositingFilter = compositingFilter::overlayBlendMode;
    grain.minificationFilter = grain.magnificationFilter = Sampling::nearest;
    Layer tint;
    tint.frame = tree.bounds;
    tint.opacity = static_cast<float>(look.tintOpacity);
    tint.backgroundColor = look.tint;
    tree.layers = {grain, tint};
    return tree;
}

int OverlayDesktop::distanceFromLook(const desktop::Picture &before, const desktop::Area &area,
                                     const Look &look, desktop::Spot overlayOrigin) {
    const auto now = session.picture();
    int largest = 0;
    for (int y = area.y; y < area.bottom(); ++y) {
        for (int x = area.x; x < area.right(); ++x) {
            const auto index = static_cast<std::size_t>(
                ((y - overlayOrigin.y) * grain_->width + x - overlayOrigin.x) * 4);
            const double grey = grain_->pixels[index];
            const auto compare = [&](std::uint8_t was, std::uint8_t is, double tint) {
                const double grained = was * (1 - look.grain) + grey * look.grain;
                const double expected =
                    grained * (1 - look.tintOpacity) + tint * 255 * look.tintOpacity;
                largest = std::max(largest, static_cast<int>(std::abs(std::lround(expected) - is)));
            };
            compare(before.at(x, y).red, now.at(x, y).red, look.tint.red);
            compare(before.at(x, y).green, now.at(x, y).green, look.tint.green);
            compare(before.at(x, y).blue, now.at(x, y).blue, look.tint.blue);
        }
    }
    return largest;
}

} // namespace lumo::x11
