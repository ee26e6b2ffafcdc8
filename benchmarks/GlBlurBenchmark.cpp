// One drawing of live blur by OpenGL, from the scene's pixmap to the canvas's: the wall time, and
// that of the graphics hardware by its own clock. On a private X server it is the processor that
// draws; name a display in LUMO_BENCHMARK_DISPLAY to measure the hardware there.

#include "desktop/PrivateDesktop.h"
#include "drawing/gl/GlLayers.h"
#include "platform/x11/painting/GlDisplays.h"
#include "platform/x11/painting/Painter.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ServerResource.h"
#include "reference/EffectLook.h"

#include <benchmark/benchmark.h>
#include <epoxy/gl.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

using namespace lumo;
using namespace lumo::x11;

std::string displayName() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs
    if (const char *name = std::getenv("LUMO_BENCHMARK_DISPLAY")) {
        return name;
    }
    static const desktop::PrivateDesktop own(
        {.width = 640, .height = 480, .windowManager = desktop::WindowManager::none});
    return own.displayName();
}

// A scene of stripes, and a canvas.
class Pixmaps {
  public:
    Pixmaps(Connection &connection, int width, int height)
        : scene(connection)
        , canvas(connection) {
        const auto depth = connection.screen().root_depth;
        const OwnedGraphicsContext context(connection);
        for (const auto *pixmap : {&scene, &canvas}) {
            xcb_create_pixmap(connection, depth, pixmap->id(), connection.root(),
                              static_cast<std::uint16_t>(width),
                              static_cast<std::uint16_t>(height));
        }
        xcb_create_gc(connection, context.id(), scene.id(), 0, nullptr);
        for (int x = 0; x < width; x += 16) {
            const std::uint32_t colour = static_cast<std::uint32_t>(x) * 2654435761U >> 8;
            xcb_change_gc(connection, context.id(), XCB_GC_FOREGROUND, &colour);
            const xcb_rectangle_t stripe{static_cast<std::int16_t>(x), 0, 16,
                                         static_cast<std::uint16_t>(height)};
            xcb_poly_fill_rectangle(connection, scene.id(), context.id(), 1, &stripe);
        }
        connection.wait(xcb_get_input_focus(connection), xcb_get_input_focus_reply);
    }

    OwnedPixmap scene;
    OwnedPixmap canvas;
};

GlxFrame frameOf(const Pixmaps &pixmaps, int width, int height, double intensity) {
    const drawing::PixelRect whole{0, 0, width, height};
    const drawing::PointSpace space({whole}, 1);
    const auto tree = reference::EffectLook{.effectMode = "softBlur",
                                            .intensity = intensity,
                                            .liveBackdrop = true}
                          .tree(width, height);
    const drawing::PlacedLayers appearance{whole, space.screenFrame(whole), space, tree, 1};
    return {pixmaps.scene.id(),
            pixmaps.canvas.id(),
            {width, height,
             std::make_shared<const drawing::GlLayers>(drawing::glLayers(appearance).value()),
             whole}};
}

// Arguments: width and height of the display, radius of the base blur, whether all of it is damaged
// or 400 x 300 pixels in its midst.
void oneFrame(benchmark::State &state) {
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    const auto connection = Connection::open(displayName().c_str());
    const Pixmaps pixmaps(*connection, width, height);
    GlDisplays displays;
    const std::string problem = displays.open(connection->displayName(), connection->screenNumber(),
                                              connection->screen().root_depth, true);
    auto frame = frameOf(pixmaps, width, height, static_cast<double>(state.range(2) - 24) / 10);
    if (!problem.empty() || !displays.draw(0, frame)) {
        state.SkipWithError(("OpenGL cannot draw: " + problem).c_str());
        return;
    }
    state.SetLabel(reinterpret_cast<const char *>(glGetString(GL_RENDERER)));
    if (state.range(3) == 0) {
        constexpr int reach = 3 * 34;
        frame.frame.damage = drawing::PixelRect{width / 2 - 200 - reach, height / 2 - 150 - reach,
                                                400 + 2 * reach, 300 + 2 * reach};
    }
    GLuint query = 0;
    glGenQueries(1, &query);
    double hardware = 0; // nanoseconds
    for (auto _ : state) {
        glBeginQuery(GL_TIME_ELAPSED, query);
        displays.draw(0, frame);
        glEndQuery(GL_TIME_ELAPSED);
        GLuint64 elapsed = 0;
        glGetQueryObjectui64v(query, GL_QUERY_RESULT, &elapsed);
        hardware += static_cast<double>(elapsed);
    }
    glDeleteQueries(1, &query);
    displays.close();
    state.counters["hardware_ms"] = hardware / 1e6 / static_cast<double>(state.iterations());
}

} // namespace

BENCHMARK(oneFrame)
    ->ArgNames({"width", "height", "radius", "whole"})
    ->ArgsProduct({{1920}, {1080}, {24, 34}, {1, 0}})
    ->ArgsProduct({{3840}, {2160}, {24, 34}, {1, 0}})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.4)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
