#include "desktop/PrivateDesktop.h"

#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>

#include <ostream>
#include <string>

namespace lumo::desktop {
namespace {

using testing::ElementsAre;
using testing::Values;

struct Setting {
    std::string name;
    WindowManager windowManager;
    Compositor compositor = Compositor::none;

    friend std::ostream &operator<<(std::ostream &stream, const Setting &setting) {
        return stream << setting.name;
    }
};

class PrivateDesktopOn : public testing::TestWithParam<Setting> {};

// What every other desktop test rests on.
TEST_P(PrivateDesktopOn, ShowsWindowsObeysThePagerAndHearsClicks) {
    PrivateDesktop desktop(
        {.windowManager = GetParam().windowManager, .compositor = GetParam().compositor});
    DesktopSession &session = desktop.session();
    SampleApplication red(desktop, "Red", {{.area = {100, 100, 400, 300}, .colour = "#c83232"}});
    SampleApplication blue(desktop, "Blue", {{.area = {300, 200, 400, 300}, .colour = "#3232c8"}});
    constexpr Spot shared = {420, 350};
    constexpr Spot onlyRed = {200, 250};

    session.activate(blue.window());
    EXPECT_TRUE(session.eventually([&] {
        return session.activeWindow() == blue.window() &&
               session.isAbove(blue.window(), red.window()) &&
               session.pixel(shared) == Colour{0x32, 0x32, 0xc8} &&
               session.pixel(onlyRed) == Colour{0xc8, 0x32, 0x32};
    }));
    session.click(onlyRed);
    EXPECT_TRUE(session.eventually([&] {
        return !red.clicks().empty() && session.activeWindow() == red.window() &&
               session.pixel(shared) == Colour{0xc8, 0x32, 0x32};
    }));
    EXPECT_THAT(red.clicks(), ElementsAre(SampleApplication::Click{0, onlyRed, 1}));
    EXPECT_THAT(blue.clicks(), ElementsAre());
    session.minimise(red.window());
    EXPECT_TRUE(session.eventually([&] {
        return !session.isViewable(red.window()) &&
               session.pixel(shared) == Colour{0x32, 0x32, 0xc8};
    }));
    session.close(blue.window());
    EXPECT_TRUE(session.eventually([&] { return session.frameOf(blue.window()) == XCB_NONE; }));
}

INSTANTIATE_TEST_SUITE_P(
    Managers, PrivateDesktopOn,
    Values(Setting{"openbox", WindowManager::openbox},
           Setting{"openboxPicomXrender", WindowManager::openbox, Compositor::picomXrender},
           Setting{"openboxPicomGlx", WindowManager::openbox, Compositor::picomGlx},
           Setting{"fluxbox", WindowManager::fluxbox}, Setting{"xfwm4", WindowManager::xfwm4},
           Setting{"xfwm4Compositing", WindowManager::xfwm4Compositing}),
    [](const auto &setting) { return setting.param.name; });

} // namespace
} // namespace lumo::desktop
