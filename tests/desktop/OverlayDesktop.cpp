#include "OverlayDesktop.h"

#include "bus/RunUntil.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "reference/Grain.h"
#include "reference/ReferenceRenderer.h"

#include <array>
#include <cstdlib>
#include <map>

namespace lumo::x11 {

namespace {

// Seconds. OpenGL in software takes most of a minute for its first picture where its cache of
// shaders is empty and the machine is busy.
constexpr double deadline = 60;
constexpr int tolerance = 2;

} // namespace

OverlayDesktop::OverlayDesktop(const desktop::DesktopOptions &options, double pixelsPerPoint)
    : MirroredDesktop(options)
    , width(options.width)
    , height(options.height)
    , scale(pixelsPerPoint)
    , log_([this](std::string_view line) { lines.emplace_back(line); })
    , screens_{{1, frame(), scale}}
    , watch_(x11::watch(loop, *connection, [] {})) {
    makeOverlays();
}

void OverlayDesktop::makeOverlays() {
    Screens &screens = *this;
    overlays = std::make_unique<X11OverlayWindows>(
        *connection, *mirror, screens,
        [this] {
            return drawing::PointSpace({{0, 0, width, height}}, scale);
        },
        loop, log_);
}

void OverlayDesktop::useRenderer(const std::string &name) {
    overlays.reset();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): its thread has ended with it
    setenv("LUMO_RENDERER", name.c_str(), 1);
    makeOverlays();
}

Rect OverlayDesktop::frame() const {
    return {0, 0, width / scale, height / scale};
}

bool OverlayDesktop::eventually(const std::function<bool()> &condition) {
    return runUntil(loop, condition, deadline);
}

std::uint64_t OverlayDesktop::bytesOfTurn() {
    connection->flush();
    const auto before = connection->bytesSent();
    bool isOver = false;
    loop.post([&] { isOver = true; });
    eventually([&] { return isOver; });
    connection->flush();
    return connection->bytesSent() - before;
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

std::shared_ptr<const Image> OverlayDesktop::grain(int width, int height) {
    static std::map<std::array<int, 2>, std::shared_ptr<const Image>> images;
    auto &image = images[{width, height}];
    if (!image) {
        image = reference::grainImage(width, height);
    }
    return image;
}

LayerTree OverlayDesktop::tree(const Rect &frame, const Look &look) const {
    LayerTree tree;
    tree.bounds = {0, 0, frame.width, frame.height};
    Layer grainLayer;
    grainLayer.frame = tree.bounds;
    grainLayer.opacity = static_cast<float>(look.grain);
    grainLayer.contents = grain(static_cast<int>(frame.width), static_cast<int>(frame.height));
    grainLayer.blendMode = BlendMode::overlay;
    grainLayer.minificationFilter = grainLayer.magnificationFilter = Sampling::nearest;
    Layer tint;
    tint.frame = tree.bounds;
    tint.opacity = static_cast<float>(look.tintOpacity);
    tint.backgroundColor = look.tint;
    tree.layers = {grainLayer, tint};
    return tree;
}

std::string OverlayDesktop::difference(const desktop::Picture &plain, const desktop::Picture &shown,
                                       const desktop::Area &area, const desktop::Area &frame,
                                       const Look &look) const {
    const auto layers =
        tree({0, 0, static_cast<double>(frame.width), static_cast<double>(frame.height)}, look);
    auto expected = plain;
    expected.paste(reference::render(plain.part(frame), layers, 1, look.alpha), {frame.x, frame.y});
    return shown.differenceFrom(expected, area, tolerance);
}

std::string OverlayDesktop::lastingDifference(PlatformWindow &overlay, const desktop::Area &area,
                                              const std::function<void()> &wish) {
    const auto at = overlay.frame();
    const desktop::Area frame{static_cast<int>(at.x), height - static_cast<int>(at.maxY()),
                              static_cast<int>(at.width), static_cast<int>(at.height)};
    std::string found;
    eventually([&] {
        wish();
        settle();
        const auto shown = session.picture();
        overlay.setAlphaValue(0);
        settle();
        const auto plain = session.picture();
        overlay.setAlphaValue(1);
        found = difference(plain, shown, area, frame, {});
        return found.empty();
    });
    settle();
    return found;
}

} // namespace lumo::x11
