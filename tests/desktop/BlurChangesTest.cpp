#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "platform/x11/server/EventKinds.h"
#include "reference/EffectLook.h"
#include "reference/ReferenceRenderer.h"

#include <gtest/gtest.h>
#include <xcb/damage.h>
#include <xcb/shape.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::Area;
using desktop::Colour;
using desktop::Picture;
using desktop::SampleApplication;
using reference::EffectLook;

class BlurChanges : public testing::Test, protected OverlayDesktop {
  protected:
    BlurChanges()
        : OverlayDesktop({.width = 800, .height = 600}) {
        session.setWallpaper(
            {width, height, [](int x, int y) {
                 return x / 50 % 2 == y / 50 % 2 ? Colour{30, 60, 200} : Colour{240, 230, 120};
             }});
        overlay_ = overlays->makeWindow(frame());
        overlay_->commit(tree_);
    }

    // A window that nobody manages, at the bottom of the stack, with that colour in its visual's
    // own format.
    xcb_window_t open(const Area &area, std::uint32_t colour, bool hasAlpha) {
        auto *server = session.connection();
        const auto window = xcb_generate_id(server);
        const auto visual = hasAlpha ? RenderFormats(*connection).translucentVisual()
                                     : connection->screen().root_visual;
        const auto colormap = xcb_generate_id(server);
        xcb_create_colormap(server, XCB_COLORMAP_ALLOC_NONE, colormap, session.root(), visual);
        const std::array<std::uint32_t, 4> attributes = {colour, 0, 1, colormap};
        xcb_create_window(
            server, hasAlpha ? 32 : XCB_COPY_FROM_PARENT, window, session.root(),
            static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
            static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height), 0,
            XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
            XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_COLORMAP,
            attributes.data());
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(server, window, XCB_CONFIG_WINDOW_STACK_MODE, &below);
        xcb_map_window(server, window);
        xcb_flush(server);
        EXPECT_TRUE(session.eventually([&] { return session.isViewable(window); }));
        return window;
    }

    void setOpacity(xcb_window_t window, double opacity) {
        session.setNumbers(window, "_NET_WM_WINDOW_OPACITY",
                           {static_cast<std::uint32_t>(opacity * 0xffffffff)});
    }

    void recolour(xcb_window_t window, std::uint32_t colour) {
        xcb_change_window_attributes(session.connection(), window, XCB_CW_BACK_PIXEL, &colour);
        xcb_clear_area(session.connection(), 0, window, 0, 0, 0, 0);
        session.stacking(); // the server has done it
    }

    void shape(xcb_window_t window, const xcb_rectangle_t &part) {
        xcb_shape_rectangles(session.connection(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                             XCB_CLIP_ORDERING_UNSORTED, window, 0, 0, 1, &part);
        xcb_flush(session.connection());
    }

    void commitIntensity(double intensity) {
        tree_ =
            EffectLook{.effectMode = "softBlur", .intensity = intensity, .liveBackdrop = true}.tree(
                width, height, 1);
        overlay_->commit(tree_);
    }

    // Whether the blur comes to be that of the scene.
    testing::AssertionResult comesToShow(const Picture &scene, double alpha = 1) {
        const Picture expected = blend(scene, reference::render(scene, tree_, 1), alpha);
        double ratio = 0;
        const bool isRight = eventually([&] {
            ratio = peakSignalToNoiseRatio(session.picture(), expected, wholeArea());
            return ratio >= 38;
        });
        return (isRight ? testing::AssertionSuccess() : testing::AssertionFailure())
               << ratio << " dB";
    }

    static Colour mix(const Colour &below, const Colour &above, double opacity) {
        const auto mixed = [opacity](std::uint8_t from, std::uint8_t to) {
            return static_cast<std::uint8_t>(std::lround(from + (to - from) * opacity));
        };
        return {mixed(below.red, above.red), mixed(below.green, above.green),
                mixed(below.blue, above.blue)};
    }

    static Picture blend(const Picture &below, const Picture &above, double opacity) {
        return {below.width(), below.height(),
                [&](int x, int y) { return mix(below.at(x, y), above.at(x, y), opacity); }};
    }

    static void fill(Picture &picture, const Area &area, Colour colour, double opacity = 1) {
        for (int y = area.y; y < area.bottom(); ++y) {
            for (int x = area.x; x < area.right(); ++x) {
                picture.at(x, y) = mix(picture.at(x, y), colour, opacity);
            }
        }
    }

    LayerTree tree_ =
        EffectLook{.effectMode = "softBlur", .intensity = 0, .liveBackdrop = true}.tree(800, 600,
                                                                                        1);
    std::unique_ptr<PlatformWindow> overlay_;
};

// Windows beneath count as a compositing manager would show them; those that are not to be seen do
// not count, and each change is followed.
TEST_F(BlurChanges, ShapeAlphaOpacityAndPresenceBeneath) {
    const Picture bare = session.stillPicture();
    SampleApplication app(desktop, "Sample", {{.area = {500, 60, 200, 150}, .colour = "#00ff00"}});
    const auto sample = session.frameAreaOf(app.window());
    const Picture withSample = session.stillPicture();
    overlay_->setLevel(1);
    overlay_->orderFront();
    EXPECT_TRUE(comesToShow(withSample));
    session.minimise(app.window());
    EXPECT_TRUE(comesToShow(bare));

    Picture scene = bare;
    const Area red{40, 40, 300, 200};
    const auto solid = open(red, 0xff0000, false);
    setOpacity(solid, 0.4);
    fill(scene, red, {255, 0, 0}, 0.4);
    const Area green{60, 300, 300, 200};
    open(green, 0x80008000, true);
    fill(scene, green, {0, 255, 0}, 0.5);
    const auto shaped = open({420, 260, 300, 300}, 0x000000, false);
    shape(shaped, {150, 0, 150, 150});
    fill(scene, {570, 260, 150, 150}, {0, 0, 0});
    EXPECT_TRUE(comesToShow(scene)) << "opacity, alpha and shape";

    setOpacity(solid, 1);
    fill(scene, red, {255, 0, 0});
    shape(shaped, {150, 0, 150, 300});
    fill(scene, {570, 260, 150, 300}, {0, 0, 0});
    session.activate(app.window());
    Picture restored = scene;
    restored.paste(withSample.part(sample), {sample.x, sample.y});
    EXPECT_TRUE(comesToShow(restored)) << "opaque again, another shape, and restored";
    overlay_->setAlphaValue(0.5);
    EXPECT_TRUE(comesToShow(restored, 0.5)) << "half of it";
}

// The server does what the overlay asks for only after the next change.
TEST_F(BlurChanges, ChangesWhileAPictureIsDrawn) {
    Picture scene = session.stillPicture();
    const Area left{40, 40, 300, 500};
    const Area right{440, 40, 300, 500};
    const auto first = open(left, 0xff0000, false);
    const auto second = open(right, 0xff0000, false);
    overlay_->setLevel(1);
    overlay_->orderFront();
    fill(scene, left, {255, 0, 0});
    fill(scene, right, {255, 0, 0});
    EXPECT_TRUE(comesToShow(scene));
    const auto meanwhile = [&](const std::function<void()> &cause,
                               const std::function<void()> &change) {
        xcb_grab_server(session.connection());
        const auto before = connection->bytesSent();
        cause();
        EXPECT_TRUE(eventually([&] { return connection->bytesSent() > before; }));
        change();
        xcb_ungrab_server(session.connection());
        xcb_flush(session.connection());
    };

    meanwhile([&] { recolour(first, 0x0000ff); }, [&] { recolour(second, 0x0000ff); });
    fill(scene, left, {0, 0, 255});
    fill(scene, right, {0, 0, 255});
    EXPECT_TRUE(comesToShow(scene)) << "beneath";
    meanwhile([&] { commitIntensity(0.3); }, [&] { commitIntensity(1); });
    EXPECT_TRUE(comesToShow(scene)) << "of the appearance";
}

// The time from a window's drawing to that of the overlay above it; and silence when nothing moves.
TEST_F(BlurChanges, DrawnWithinTwoRefreshesAndNothingElse) {
    SampleApplication app(desktop, "Sample", {{.area = {200, 200, 200, 150}, .colour = "#c83232"}});
    overlay_->setLevel(1);
    overlay_->orderFront();
    settle();
    const auto eyes = Connection::open(desktop.displayName().c_str());
    const auto overlay = static_cast<xcb_window_t>(overlay_->windowNumber());
    for (const auto window : {app.window(), overlay}) {
        xcb_damage_create(*eyes, xcb_generate_id(*eyes), window,
                          XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    }
    double changedAt = 0;
    std::vector<double> delays;
    int draws = 0;
    const auto events = eyes->events().on(event::damageNotify, [&](const auto &damage) {
        if (damage.drawable != overlay) {
            changedAt = changedAt == 0 ? loop.now() : changedAt;
            return;
        }
        ++draws;
        if (changedAt != 0) {
            delays.push_back(loop.now() - changedAt);
            changedAt = 0;
        }
    });
    const auto watch = x11::watch(loop, *eyes, [] {});
    app.animate(0, true);
    ASSERT_TRUE(eventually([&] { return delays.size() >= 31; }));
    app.animate(0, false);
    std::ranges::sort(delays);
    EXPECT_LE(delays[delays.size() / 2], 2.0 / 60);

    settle();
    draws = 0;
    std::uint64_t bytes = 0;
    for (int turn = 0; turn < 200; ++turn) {
        bytes += bytesOfTurn();
    }
    EXPECT_EQ(bytes, 0);
    EXPECT_EQ(draws, 0);

    // A change of the appearance alone is drawn once.
    commitIntensity(1);
    EXPECT_TRUE(eventually([&] { return draws > 0; }));
    settle();
    EXPECT_EQ(draws, 1);
}

} // namespace
} // namespace lumo::x11
