#include "Look.h"
#include "ManagersTable.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/RequestCounter.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>
#include <xcb/shape.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

struct Manager {
    std::string name;
    WindowManager windowManager = WindowManager::none;
    std::string placement;
    std::vector<Key> nextWindow = {}; // the keys that focus another window, empty for none

    friend std::ostream &operator<<(std::ostream &stream, const Manager &manager) {
        return stream << manager.name;
    }
};

const std::vector<Key> altTab = {Key::option, Key::tab};

const std::vector<Manager> managers = {
    {"openbox", WindowManager::openbox, "below", altTab},
    {"fluxbox", WindowManager::fluxbox, "below", altTab},
    {"xfwm4", WindowManager::xfwm4, "below", altTab},
    {"xfwm4-compositing", WindowManager::xfwm4Compositing, "below", altTab},
    {"kwin", WindowManager::kwin, "managed", altTab},
    {"kwin-compositing", WindowManager::kwinCompositing, "managed", altTab},
    {"mutter", WindowManager::mutter, "holes", altTab},
    {"metacity", WindowManager::metacity, "holes", altTab},
    {"i3-tiled", WindowManager::i3, "holes", altTab},
    {"i3-floating", WindowManager::i3Floating, "holes", altTab},
    {"icewm", WindowManager::icewm, "below", altTab},
    {"awesome", WindowManager::awesome, "holes", altTab},
    {"none", WindowManager::none, "holes"},
};

const Look look{"dim", 1};

// A window in sight, by what it was painted in.
struct Subject {
    xcb_window_t window = XCB_NONE;
    Colour colour;
};

[[maybe_unused]] double idleSeconds() {
    // Nothing changes the environment of the tester.
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    const char *seconds = std::getenv("LUMO_MANAGERS_IDLE_SECONDS");
    return seconds != nullptr ? std::strtod(seconds, nullptr) : 1;
}

class ManagersTest : public testing::TestWithParam<Manager> {
  protected:
    struct Application {
        Application(PrivateDesktop &desktop, const std::string &name, const Area &area,
                    const std::string &colour)
            : program(desktop, name, {{.title = name, .area = area, .colour = colour}})
            , subject{program.window(), Colour::parse(colour)} {}

        SampleApplication program;
        Subject subject;
    };

    bool hasManager() const { return GetParam().windowManager != WindowManager::none; }

    void bringForward(const Application &application) {
        const xcb_window_t window = application.program.window();
        if (hasManager()) {
            session.activate(window);
            EXPECT_TRUE(session.eventually([&] { return session.activeWindow() == window; }));
        } else {
            const std::uint32_t above = XCB_STACK_MODE_ABOVE;
            xcb_configure_window(session.connection(), window, XCB_CONFIG_WINDOW_STACK_MODE,
                                 &above);
        }
    }

    bool isSupported(std::string_view hint) {
        const auto supported = session.numbers(session.root(), "_NET_SUPPORTED");
        return std::ranges::find(supported, session.atom(hint)) != supported.end();
    }

    // Places within a window that nothing but overlays hides.
    std::vector<Spot> spotsIn(xcb_window_t window) {
        std::set<xcb_window_t> ours;
        for (const auto &overlay : lumo->overlays()) {
            ours.insert(session.frameOf(overlay.window));
        }
        std::vector<Area> above;
        const auto order = session.stacking();
        auto place = std::ranges::find(order, session.frameOf(window));
        while (place != order.end() && ++place != order.end()) {
            if (!ours.contains(*place) && session.isViewable(*place)) {
                above.push_back(session.frameAreaOf(*place));
            }
        }
        const Area area = session.areaOf(window);
        std::vector<Spot> spots;
        constexpr int steps = 9;
        for (int row = 1; row < steps; ++row) {
            for (int column = 1; column < steps; ++column) {
                const Spot spot = {area.x + area.width * column / steps,
                                   area.y + area.height * row / steps};
                const auto hides = [&](const Area &other) {
                    return other.contains(spot.x, spot.y);
                };
                if (hides(session.screenArea()) && std::ranges::none_of(above, hides)) {
                    spots.push_back(spot);
                }
            }
        }
        return spots;
    }

    std::string wrongAt(const Spot &spot, const Subject &subject, bool isClear) {
        const Colour pixel = session.pixel(spot);
        const Colour expected =
            isClear ? subject.colour : look.over(subject.colour, grainAt(1280, spot));
        return distance(pixel, expected) <= (isClear ? 0 : tolerance)
                   ? std::string()
                   : "at " + std::to_string(spot.x) + "," + std::to_string(spot.y) + " " +
                         pixel.describe() + " instead of " + expected.describe();
    }

    std::string wrongIn(const Subject &subject, bool isClear) {
        const auto spots = spotsIn(subject.window);
        if (spots.empty()) {
            return "a window is hidden";
        }
        for (const Spot &spot : {spots.front(), spots[spots.size() / 2], spots.back()}) {
            if (const auto wrong = wrongAt(spot, subject, isClear); !wrong.empty()) {
                return wrong;
            }
        }
        return {};
    }

    // Waits until these are as painted, those under the effect, and no overlay has the focus. What
    // is wrong at the end, empty when nothing is.
    std::string wrongWith(const std::vector<Subject> &clear, const std::vector<Subject> &covered) {
        std::string wrong;
        const bool isRight = session.eventually([&] {
            wrong.clear();
            for (const auto &subject : clear) {
                wrong += wrongIn(subject, true);
            }
            for (const auto &subject : covered) {
                wrong += wrongIn(subject, false);
            }
            for (const auto &overlay : lumo->overlays()) {
                if (session.focusedWindow() == overlay.window ||
                    session.activeWindow() == overlay.window) {
                    wrong += "an overlay has the focus";
                }
            }
            return wrong.empty();
        });
        if (isRight) {
            return {};
        }
        savePicture();
        return wrong + "\n" + lumo->process().report();
    }

    void savePicture() {
        if (const auto &table = ManagersTable::shared(); table.isWanted()) {
            session.picture().savePng(table.pictureFile(GetParam().name));
        }
    }

    void record(const std::string &column, const std::string &wrong) {
        EXPECT_EQ(wrong, "") << column;
        if (wrong.empty()) {
            note(column, "ok");
        }
    }

    void note(const std::string &column, const std::string &cell) {
        ManagersTable::shared().set(GetParam().name, column, cell);
    }

    std::string placementSeen() {
        const auto overlay = lumo->waitForOverlays(1).front().window;
        if (!session.isOverrideRedirect(overlay)) {
            return "managed";
        }
        auto *connection = session.connection();
        auto *extents = xcb_shape_query_extents_reply(
            connection, xcb_shape_query_extents(connection, overlay), nullptr);
        const bool isShaped = extents != nullptr && extents->bounding_shaped != 0;
        std::free(extents);
        return isShaped ? "holes" : "below";
    }

    PrivateDesktop desktop{{.windowManager = GetParam().windowManager}};
    DesktopSession &session = desktop.session();
    Application red{desktop, "Red", {60, 80, 420, 320}, "#d83c30"};
    Application green{desktop, "Green", {360, 240, 420, 320}, "#3cb450"};
    Application blue{desktop, "Blue", {640, 420, 420, 320}, "#3c64e0"};
    std::optional<LumoProcess> lumo;
};

TEST_P(ManagersTest, ShowsTheSame) {
    bringForward(red);
    lumo.emplace(desktop, look.preferences());
    lumo->waitForOverlays(1);
    EXPECT_EQ(wrongWith({red.subject}, {green.subject, blue.subject}), "");
    EXPECT_EQ(placementSeen(), GetParam().placement);
    bringForward(green);
    EXPECT_EQ(wrongWith({green.subject}, {red.subject, blue.subject}), "");
    savePicture();
}

INSTANTIATE_TEST_SUITE_P(All, ManagersTest, testing::ValuesIn(managers), [](const auto &row) {
    std::string name = row.param.name;
    std::erase(name, '-');
    return name;
});

} // namespace
} // namespace lumo::desktop
