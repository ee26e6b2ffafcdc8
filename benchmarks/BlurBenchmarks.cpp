// What drawing costs while what lies beneath changes: a frame of blur, the work on pixels alone and
// with the X server's part, and the real program with a window animating beneath it, beside a
// compositing manager that dims or blurs the same. Prints numbers and judges none; wall times move
// with what else the machine does.

#include "ProcessUse.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"
#include "drawing/MaterialRenderer.h"
#include "platform/x11/painting/CpuBlurRenderer.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/server/ServerImages.h"
#include "reference/EffectLook.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using drawing::PixelRect;

constexpr int damagedWidth = 400;
constexpr int damagedHeight = 300;

// The median and the fastest of some runs, in milliseconds.
std::string timesOf(const std::function<void()> &work) {
    std::vector<double> times;
    work();
    for (int run = 0; run < 25; ++run) {
        const double start = now();
        work();
        times.push_back((now() - start) * 1000);
    }
    std::ranges::sort(times);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%6.2f ms (fastest %5.2f)", times[times.size() / 2],
                  times.front());
    return text.data();
}

void measureFrames(x11::Connection &connection, int width, int height, double intensity) {
    const x11::RenderFormats formats(connection);
    x11::ServerImages images(connection);
    drawing::GrainPlanes planes;
    x11::CpuBlurRenderer renderer({connection, formats, images}, planes);

    x11::RenderTarget target{width, height, 32, formats.translucent()};
    std::vector<x11::OwnedPixmap> pixmaps;
    std::vector<x11::OwnedPicture> pictures;
    for (int i = 0; i < 2; ++i) {
        pixmaps.emplace_back(connection);
        xcb_create_pixmap(connection, 32, pixmaps.back().id(), connection.root(),
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height));
        pictures.emplace_back(connection);
        xcb_render_create_picture(connection, pictures.back().id(), pixmaps.back().id(),
                                  formats.translucent(), 0, nullptr);
    }
    target.scenePixmap = pixmaps[0].id();
    target.scene = pictures[0].id();
    target.canvasPixmap = pixmaps[1].id();
    target.canvas = pictures[1].id();

    const reference::EffectLook look{"softBlur", intensity, false, true};
    drawing::PlacedLayers appearance;
    appearance.area = {0, 0, width, height};
    appearance.frame = {0, 0, static_cast<double>(width), static_cast<double>(height)};
    appearance.space = drawing::PointSpace({appearance.area}, 1);
    appearance.tree = look.tree(width, height);
    renderer.prepare(appearance, target);

    const int reach = renderer.reach();
    const PixelRect part{width / 3 - reach, height / 3 - reach, damagedWidth + 2 * reach,
                         damagedHeight + 2 * reach};
    struct Case {
        const char *name = nullptr;
        PixelRect pixels;
    };
    for (const auto &[name, area] : {Case{"all of it", {0, 0, width, height}},
                                     Case{"400x300  ", part.intersection(appearance.area)}}) {
        const PixelRect pixels = area; // what a lambda can capture
        const auto frame = timesOf([&] {
            bool isDone = false;
            renderer.render({pixels}, [&](bool /*succeeded*/) { isDone = true; });
            connection.dispatchUntil([&] { return isDone; }, 5);
            connection.wait(xcb_get_input_focus(connection), xcb_get_input_focus_reply);
        });
        const auto layers = drawing::materialLayers(appearance, planes);
        const drawing::MaterialRenderer material(width, height, layers.material);
        const auto texels = material.texelsFor(pixels);
        const std::vector<std::uint8_t> from(4 * static_cast<std::size_t>(texels.width) *
                                                 static_cast<std::size_t>(texels.height),
                                             100);
        const auto stride = 4 * static_cast<std::size_t>(pixels.width);
        std::vector<std::uint8_t> to(stride * static_cast<std::size_t>(pixels.height));
        const auto work = timesOf([&] {
            material.render(pixels, from.data(), 4 * static_cast<std::size_t>(texels.width),
                            to.data(), stride);
        });
        std::printf("  %dx%d, radius %.0f, %s changed: the pixels %s, with the server %s\n", width,
                    height, 24 + 10 * intensity, name, work.c_str(), frame.c_str());
    }
}

// What ten seconds cost the program that draws and the X server; the step is done again and again.
void measureSeconds(PrivateDesktop &desktop, const std::string &name, ChildProcess &drawing,
                    const std::function<void()> &step) {
    const double start = now();
    const double own = cpuSeconds(drawing.processIdentifier());
    const double server = cpuSeconds(desktop.server().processIdentifier());
    while (now() - start < 10) {
        step();
    }
    std::printf("  %-50s %.2f s + X server %.2f s CPU in 10 s\n", name.c_str(),
                cpuSeconds(drawing.processIdentifier()) - own,
                cpuSeconds(desktop.server().processIdentifier()) - server);
}

// A window animates 30 times a second beneath something that draws over the whole display.
void measureAnimation(PrivateDesktop &desktop, SampleApplication &application,
                      const std::string &name, ChildProcess &drawing) {
    application.animate(0, true);
    desktop.session().eventually([] { return false; }, Seconds(1));
    measureSeconds(desktop, name, drawing, [] { pauseBriefly(); });
    application.animate(0, false);
}

// A window is moved 100 times a second there.
void measureMoves(PrivateDesktop &desktop, SampleApplication &application, const std::string &name,
                  ChildProcess &drawing) {
    double next = now();
    int position = 0;
    measureSeconds(desktop, name + ", a window moving", drawing, [&] {
        position = (position + 5) % 600;
        desktop.session().move(application.window(0), 400 + position, 300 + position / 2);
        xcb_flush(desktop.session().connection());
        for (next += 0.01; now() < next;) {
            pauseBriefly();
        }
    });
}

void measureLumo(PrivateDesktop &desktop, SampleApplication &application, const std::string &mode) {
    LumoProcess lumo(desktop, shownEffect(mode, 0.6));
    lumo.waitForOverlays();
    desktop.session().stillPicture();
    const auto name = "Lumo, " + mode + " 0.6, with grain";
    measureAnimation(desktop, application, name, lumo.process());
    measureMoves(desktop, application, name, lumo.process());
    lumo.stop();
}

void measurePeer(PrivateDesktop &desktop, SampleApplication &application,
                 const std::string &configuration, const std::string &name) {
    const auto file = desktop.directory() / "picom.conf";
    std::ofstream(file) << configuration << '\n';
    const auto picom = desktop.start({"picom", "--experimental-backends", "--config", file});
    auto &session = desktop.session();
    session.eventually([&] { return session.selectionOwner("_NET_WM_CM_S0") != XCB_NONE; });
    session.stillPicture();
    measureAnimation(desktop, application, "picom, " + name + ", no grain", *picom);
    measureMoves(desktop, application, "picom, " + name + ", no grain", *picom);
}

void measureBesidePeer() {
    PrivateDesktop desktop({.width = 1920, .height = 1080});
    SampleApplication application(
        desktop, "Sample",
        {{.area = {700, 400, damagedWidth, damagedHeight}, .colour = "#6080a0"},
         {.area = {100, 100, 606, 549}, .colour = "#c0c8d0", .page = true},
         {.area = {1300, 120, 500, 700}, .colour = "#e0c8d0", .page = true},
         {.area = {300, 900, 300, 100}, .colour = "#304050"}});
    auto &session = desktop.session();
    session.activate(application.window(3));
    for (const char *mode : {"dim", "tint", "softBlur"}) {
        measureLumo(desktop, application, mode);
    }
    measurePeer(desktop, application, R"(backend = "xrender"; inactive-dim = 0.6;)",
                "xrender, inactive-dim 0.6");
    // All that lies beneath a translucent window as large as the display.
    const auto pane = application.open(
        {.area = session.screenArea(), .colour = "#808080", .overrideRedirect = true});
    const std::uint32_t opacity = 0x20000000;
    xcb_change_property(session.connection(), XCB_PROP_MODE_REPLACE, pane,
                        session.atom("_NET_WM_WINDOW_OPACITY"), XCB_ATOM_CARDINAL, 32, 1, &opacity);
    xcb_flush(session.connection());
    for (const char *method : {"none", "dual_kawase"}) {
        measurePeer(desktop, application,
                    R"(backend = "glx"; blur: { method = ")" + std::string(method) +
                        R"("; strength = 7; };)",
                    "software GL, blur " + std::string(method));
    }
}

void measure() {
    PrivateDesktop desktop({.width = 640, .height = 480, .windowManager = WindowManager::none});
    const auto connection = x11::Connection::open(desktop.displayName().c_str());
    if (!connection) {
        throw std::runtime_error("no connection to the private desktop");
    }
    std::printf("frames by the processor, one thread\n");
    for (const auto &[width, height] : {std::pair{1920, 1080}, std::pair{3840, 2160}}) {
        for (const double intensity : {0.0, 1.0}) {
            measureFrames(*connection, width, height, intensity);
        }
    }
    std::printf("a 400x300 window beneath animating at 30 Hz or moving at 100 Hz, 1920x1080\n");
    measureBesidePeer();
}

} // namespace
} // namespace lumo::desktop

int main() {
    try {
        lumo::desktop::measure();
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The benchmark failed: %s\n", problem.what());
        return 1;
    }
}
