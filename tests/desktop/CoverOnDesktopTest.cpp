#include "ScriptedInterface.h"
#include "app/AppController.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/X11Backend.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "platform/x11/server/SingleInstance.h"
#include "support/Log.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::PrivateDesktop;
using desktop::SampleApplication;

// The controller itself on a real desktop with two displays side by side: the Cover App and another
// application, each with a window on both.
class CoverOnDesktop : public testing::Test {
  protected:
    CoverOnDesktop() {
        desktop_.setMonitor("LEFT", {0, 0, 800, 600}, true);
        desktop_.setMonitor("RIGHT", {800, 0, 800, 600}, false);
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs
        setenv("XDG_CONFIG_HOME", desktop_.configDirectory().c_str(), 1);
        connection_ = Connection::open(desktop_.displayName().c_str());
        instance_ = SingleInstance::claim(*connection_);
        backend_ = std::make_unique<X11Backend>(*connection_, *instance_, loop(), log_, [] {});
        watch_ = x11::watch(loop(), *connection_, [] { FAIL() << "the server is gone"; });
        controller_ = std::make_unique<AppController>(backend_->platform(), interface_);
        settings().effectMode.set(EffectMode::dim);
        settings().privacyCoverEnabled.set(true);
        settings().privacyCoverBundleID.set("Cover");
        settings().privacyCoverDisplayName.set("The Cover");
    }

    // One for the whole process, as it can be run only once; turned by hand here.
    static freedesktop::GlibMainLoop &loop() {
        static freedesktop::GlibMainLoop mainLoop;
        return mainLoop;
    }

    SettingsStore &settings() { return controller_->settingsStore(); }
    const std::string &status() { return settings().privacyCoverRuntimeStatus.value(); }

    bool eventually(const std::function<bool()> &condition) {
        return session_.eventually([&] {
            turn();
            return condition();
        });
    }

    bool remains(const std::function<bool()> &condition, desktop::Seconds duration) {
        return session_.remains(
            [&] {
                turn();
                return condition();
            },
            duration);
    }

    static void turn() {
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
    }

    // The overlay that covers the display with this left edge.
    xcb_window_t overlayAt(int x) {
        for (const auto window : session_.stacking()) {
            if (session_.classOf(window) == "Lumo" && session_.isViewable(window) &&
                session_.areaOf(window).x == x) {
                return window;
            }
        }
        return XCB_NONE;
    }

    // The window lies above the overlay of that display, with nothing but clear ones.
    bool isClear(xcb_window_t window, int display) {
        const auto overlay = overlayAt(display);
        return overlay != XCB_NONE && session_.isAbove(window, overlay);
    }

    // The overlay lies directly below the frame of this window, other overlays not counted.
    bool isReference(xcb_window_t window, int display) {
        const auto frame = session_.frameOf(window);
        const auto overlay = overlayAt(display);
        xcb_window_t above = XCB_NONE;
        auto order = session_.stacking();
        std::ranges::reverse(order);
        for (const auto each : order) {
            if (each == overlay) {
                return overlay != XCB_NONE && above == frame;
            }
            if (session_.isViewable(each) && session_.classOf(each) != "Lumo") {
                above = each;
            }
        }
        return false;
    }

    bool focus(xcb_window_t window) {
        session_.activate(window);
        return eventually([&] { return session_.activeWindow() == window; });
    }

    static constexpr int left = 0;
    static constexpr int right = 800;

    PrivateDesktop desktop_{{.width = 1600, .height = 600}};
    desktop::DesktopSession &session_ = desktop_.session();
    std::vector<std::string> lines_;
    Log log_{[this](std::string_view line) { lines_.emplace_back(line); }};
    std::unique_ptr<Connection> connection_;
    std::unique_ptr<SingleInstance> instance_;
    std::unique_ptr<X11Backend> backend_;
    test::ScriptedInterface interface_;
    Handle watch_;
    std::unique_ptr<AppController> controller_;
    SampleApplication cover_{
        desktop_, "Cover", {{.title = "First", .area = {60, 60, 420, 320}, .colour = "#d83c30"}}};
    SampleApplication other_{
        desktop_,
        "Other",
        {{.title = "Left", .area = {200, 200, 420, 320}, .colour = "#3c64e0"},
         {.title = "Right", .area = {1000, 100, 420, 320}, .colour = "#3cb450"}}};
};

TEST_F(CoverOnDesktop, StaysClearAndIsRaisedAtStartWithItsStatusInWords) {
    ASSERT_TRUE(focus(other_.window(0)));
    EXPECT_TRUE(session_.isAbove(other_.window(0), cover_.window()));
    EXPECT_EQ(status(), "Off") << "nothing is shown yet";
    controller_->setLumoEnabled(true);
    EXPECT_TRUE(eventually([&] {
        return session_.activeWindow() == cover_.window() &&
               session_.isAbove(cover_.window(), other_.window(0)) &&
               isReference(cover_.window(), left);
    })) << "raised at start";
    EXPECT_EQ(status(), "Cover active");
    EXPECT_TRUE(eventually([&] {
        return overlayAt(right) != XCB_NONE &&
               session_.isAbove(overlayAt(right), session_.frameOf(other_.window(1)));
    })) << "a display without the cover is covered as a whole";

    ASSERT_TRUE(focus(other_.window(1)));
    EXPECT_TRUE(remains(
        [&] { return isReference(cover_.window(), left) && !isClear(other_.window(1), right); },
        desktop::Seconds(0.5)))
        << "whatever has the focus";

    session_.move(cover_.window(), 900, 60);
    EXPECT_TRUE(eventually([&] { return isReference(cover_.window(), right); }));
    cover_.kill();
    EXPECT_TRUE(eventually([&] { return status() == "The Cover unavailable"; }));
    settings().privacyCoverEnabled.set(false);
    EXPECT_TRUE(eventually([&] { return status() == "Off"; }));
    EXPECT_TRUE(eventually([&] { return isReference(other_.window(1), right); }));
}

TEST_F(CoverOnDesktop, ItsLockSurvivesAShortAbsenceOfTheEffect) {
    settings().coverWindowLockDuration.set(60);
    controller_->setLumoEnabled(true);
    ASSERT_TRUE(eventually([&] { return isReference(cover_.window(), left); }));
    const auto second =
        cover_.open({.title = "Second", .area = {100, 120, 420, 320}, .colour = "#d0a030"});
    ASSERT_TRUE(focus(second));
    EXPECT_TRUE(remains([&] { return isReference(cover_.window(), left) || isClear(second, left); },
                        desktop::Seconds(0.3)));
    settings().privacyCoverBringForwardOnStart.set(false);
    controller_->setLumoEnabled(false);
    ASSERT_TRUE(eventually([&] { return overlayAt(left) == XCB_NONE; }));
    controller_->setLumoEnabled(true);
    ASSERT_TRUE(eventually([&] { return overlayAt(left) != XCB_NONE; }));
    EXPECT_TRUE(eventually([&] { return isReference(cover_.window(), left); }))
        << "not the window in front, which a new choice would take";
    cover_.closeWindow(0);
    EXPECT_TRUE(eventually([&] { return isReference(second, left); }));
}

TEST_F(CoverOnDesktop, IsKeptAboveAtMostEvery450Milliseconds) {
    settings().privacyCoverKeepAbove.set(true);
    controller_->setLumoEnabled(true);
    ASSERT_TRUE(eventually([&] { return session_.activeWindow() == cover_.window(); }));
    // Taken away at once whenever it is in front, it comes back when its time has come.
    const double start = loop().now();
    int returns = 0;
    while (returns < 6) {
        session_.activate(other_.window(0));
        ASSERT_TRUE(eventually([&] { return session_.activeWindow() == other_.window(0); }));
        ASSERT_TRUE(eventually([&] { return session_.activeWindow() == cover_.window(); }));
        ++returns;
    }
    const double elapsed = loop().now() - start;
    EXPECT_GE(elapsed, (returns - 1) * 0.45);
    EXPECT_LT(elapsed, returns * 1.5) << "and not much rarer";
}

} // namespace
} // namespace lumo::x11
