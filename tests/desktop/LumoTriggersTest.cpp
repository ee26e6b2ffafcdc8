#include "Look.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

const Look look{{"dim", 1}};

// The keys and the pointer as a person uses them, with the real program at work on two windows.
class LumoTriggers : public testing::Test {
  protected:
    LumoTriggers() {
        session.activate(front.window());
        session.eventually([&] { return session.activeWindow() == front.window(); });
    }

    // Starts the program with the effect on, and waits until it has grabbed the keys of that many
    // shortcuts, which is the last thing it sets up, and its main loop turns.
    LumoProcess &start(Preferences more = {}, std::size_t shortcuts = 3) {
        constexpr std::size_t lockStates = 4; // Caps Lock and Num Lock
        more.merge(look.preferences());
        lumo_ = std::make_unique<LumoProcess>(desktop, more);
        const auto overlay = lumo_->waitForOverlays().front().window;
        const auto isSetUp = [&] {
            return session.passiveGrabs(overlay) == shortcuts * lockStates;
        };
        const bool hasKeys = session.eventually(isSetUp, Seconds(30));
        const long end = lumo_->process().voluntarySwitches() + 10;
        if (!hasKeys ||
            !session.eventually([&] { return lumo_->process().voluntarySwitches() >= end; },
                                Seconds(30))) {
            throw std::runtime_error("the program does not get to work: " +
                                     lumo_->process().report());
        }
        return *lumo_;
    }

    bool becomesShown(bool shown) {
        return session.eventually([&] { return lumo_->overlays().empty() != shown; });
    }

    // It does so, and stays so: a trigger that came twice would undo itself.
    bool becomesAndStays(bool shown) {
        return becomesShown(shown) &&
               session.remains([&] { return lumo_->overlays().empty() != shown; }, Seconds(0.3));
    }

    // The back window is seen as it is, or under the effect.
    bool backIsPlain() { return session.pixel(backSpot) == Colour{0xd8, 0x3c, 0x30}; }

    PrivateDesktop desktop{{.width = 900, .height = 700}};
    DesktopSession &session = desktop.session();
    const Spot backSpot = {100, 200};
    SampleApplication back{desktop, "Back", {{.area = {60, 80, 420, 320}, .colour = "#d83c30"}}};
    SampleApplication front{
        desktop, "Front", {{.area = {360, 240, 420, 320}, .colour = "#3c64e0"}}};

  private:
    std::unique_ptr<LumoProcess> lumo_;
};

TEST_F(LumoTriggers, PeekShowsTheDesktopPixelForPixel) {
    for (const Compositor compositor : {Compositor::none, Compositor::picomXrender}) {
        desktop.startCompositor(compositor);
        auto &lumo = start({{"peekDuration", 1.5}});
        ASSERT_TRUE(session.eventually([&] { return !backIsPlain(); }));
        const double pressed = now();
        session.press({Key::option, Key::command, Key::tab});
        ASSERT_TRUE(session.eventually([&] { return backIsPlain(); })) << lumo.process().report();
        const Picture revealed = session.stillPicture();
        EXPECT_TRUE(session.eventually([&] { return !backIsPlain(); }));
        EXPECT_GE(now() - pressed, 1.5);
        EXPECT_LT(now() - pressed, 4) << "a busy machine may be late";
        EXPECT_EQ(lumo.stop(), 0);
        // Compared with what is there without the program, once that is painted.
        EXPECT_TRUE(session.eventually(
            [&] { return !session.picture().firstDifference(revealed, session.screenArea()); }));
    }
}

TEST_F(LumoTriggers, EmergencyKeysStopTheEffectAndTellTheUser) {
    desktop.startSessionBus();
    const auto service = desktop.startNotificationService();
    ASSERT_TRUE(session.eventually([&] {
        return session.selectionOwner("_NET_WM_CM_S0") == XCB_NONE && service->isRunning();
    }));
    auto &lumo = start();
    // Also while another program has the whole keyboard.
    const auto grab = xcb_grab_keyboard(session.connection(), 1, session.root(), XCB_CURRENT_TIME,
                                        XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    auto *granted = xcb_grab_keyboard_reply(session.connection(), grab, nullptr);
    ASSERT_TRUE(granted != nullptr && granted->status == XCB_GRAB_STATUS_SUCCESS);
    std::free(granted);
    session.press({Key::shift, Key::control, Key::option, Key::command, Key::d});
    EXPECT_TRUE(session.remains([&] { return lumo.overlays().size() == 1; }, Seconds(0.3)))
        << "with Shift these are other keys";
    session.press({Key::control, Key::option, Key::command, Key::d});
    EXPECT_TRUE(becomesShown(false)) << lumo.process().report();
    xcb_ungrab_keyboard(session.connection(), XCB_CURRENT_TIME);
    EXPECT_TRUE(session.eventually([&] {
        return testing::Value(service->outputLines(),
                              AllOf(Contains(HasSubstr("Lumo Emergency Stop")),
                                    Contains(HasSubstr("safely turned off."))));
    })) << service->report();
    session.press({Key::control, Key::space});
    EXPECT_TRUE(becomesAndStays(true)) << "it can be turned on again";
    EXPECT_EQ(lumo.stop(), 0);
}

TEST_F(LumoTriggers, CoverAppIsRaisedAndStaysClear) {
    start({{"privacyCoverEnabled", true}, {"privacyCoverBundleID", "Back"}});
    EXPECT_TRUE(session.eventually([&] {
        return session.activeWindow() == back.window() &&
               session.isAbove(back.window(), front.window()) && backIsPlain() &&
               session.pixel(700, 500) != Colour{0x3c, 0x64, 0xe0};
    }));
    session.activate(front.window());
    ASSERT_TRUE(session.eventually([&] { return session.activeWindow() == front.window(); }));
    EXPECT_TRUE(session.remains([&] { return backIsPlain(); }, Seconds(0.5)))
        << "whatever has the focus";
}

} // namespace
} // namespace lumo::desktop
