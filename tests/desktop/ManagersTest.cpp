#include "ManagersTable.h"
#include "ThreeWindows.h"
#include "desktop/RequestCounter.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

struct Manager {
    std::string name;
    WindowManager windowManager = WindowManager::none;
    std::string placement;
    std::vector<Key> nextWindow = {}; // the keys that focus another window, empty for none
    Compositor compositor = Compositor::none;
    std::vector<OutputUse> outputs = {}; // for those that want real ones

    friend std::ostream &operator<<(std::ostream &stream, const Manager &manager) {
        return stream << manager.name;
    }
};

const std::vector<Key> altTab = {Key::option, Key::tab};
const std::vector<Key> superJ = {Key::command, Key::j};

const std::vector<Manager> managers = {
    {"openbox", WindowManager::openbox, "below", altTab},
    {"fluxbox", WindowManager::fluxbox, "below", altTab},
    {"xfwm4", WindowManager::xfwm4, "below", altTab},
    {"xfwm4-compositing", WindowManager::xfwm4Compositing, "below", altTab},
    {"kwin", WindowManager::kwin, "managed", altTab},
    {"kwin-compositing", WindowManager::kwinCompositing, "managed", altTab},
    {"mutter", WindowManager::mutter, "cut-outs", altTab},
    {"metacity", WindowManager::metacity, "cut-outs", altTab},
    {"i3-tiled", WindowManager::i3, "cut-outs", altTab},
    {"i3-floating", WindowManager::i3Floating, "cut-outs", altTab},
    {"icewm", WindowManager::icewm, "below", altTab},
    {"awesome", WindowManager::awesome, "cut-outs", superJ},
    {"bspwm", WindowManager::bspwm, "cut-outs"},
    {"herbstluftwm", WindowManager::herbstluftwm, "cut-outs", altTab},
    {"spectrwm", WindowManager::spectrwm, "cut-outs", altTab},
    {"jwm", WindowManager::jwm, "below", altTab},
    {"marco", WindowManager::marco, "cut-outs", altTab},
    {"marco-compositing", WindowManager::marcoCompositing, "cut-outs", altTab},
    {"windowmaker", WindowManager::windowMaker, "cut-outs", altTab},
    {"sawfish", WindowManager::sawfish, "below", altTab},
    {"twm", WindowManager::twm, "cut-outs"},
    {"muffin",
     WindowManager::muffin,
     "cut-outs",
     altTab,
     Compositor::none,
     {{0, {0, 0, 1280, 800}, true}}},
    {"enlightenment", WindowManager::enlightenment, "cut-outs", altTab},
    {"openbox-xcompmgr", WindowManager::openbox, "below", altTab, Compositor::xcompmgr},
    {"none", WindowManager::none, "cut-outs"},
};

double idleSeconds() {
    // Nothing changes the environment of the tester.
    // NOLINTNEXTLINE(concurrency-mt-unsafe)
    const char *seconds = std::getenv("LUMO_MANAGERS_IDLE_SECONDS");
    return seconds != nullptr ? std::strtod(seconds, nullptr) : 1;
}

class ManagersTest : public testing::TestWithParam<Manager>, protected ThreeWindows {
  protected:
    ManagersTest()
        : ThreeWindows({.windowManager = GetParam().windowManager,
                        .compositor = GetParam().compositor,
                        .server = GetParam().outputs.empty() ? Server::xvfb : Server::xorg,
                        .outputs = GetParam().outputs}) {}

    bool hasManager() const { return GetParam().windowManager != WindowManager::none; }

    // Without a manager that activates windows the program says after some seconds what it lacks.
    void closeGuidance() {
        if (session.windowManagerName()) {
            return;
        }
        xcb_window_t guidance = XCB_NONE;
        const auto find = [&](const std::vector<xcb_window_t> &windows) {
            for (const auto window : windows) {
                if (session.titleOf(window) == "Lumo" && session.classOf(window) == "lumo") {
                    guidance = window;
                }
            }
        };
        ASSERT_TRUE(session.eventually([&] {
            find(session.stacking());
            for (const auto frame : session.stacking()) {
                find(session.childrenOf(frame));
            }
            return guidance != XCB_NONE && session.isViewable(guidance);
        }));
        session.close(guidance);
        ASSERT_TRUE(session.eventually([&] { return !session.isViewable(guidance); }));
    }

    void savePicture() {
        note("picture", ManagersTable::shared().keepPicture(GetParam().name, session.picture()));
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

    // Ten clicks on windows under the effect, each of which moves the focus.
    void focusByClick() {
        RequestCounter requests(desktop.displayName(), lumo->processIdentifier());
        const int before = ordersAsked(requests);
        int arrived = 0;
        std::string wrong;
        SubjectApplication *focused = &red;
        for (int i = 0; i < 10; ++i) {
            SubjectApplication *next = focused == &red ? &green : focused == &green ? &blue : &red;
            const auto spots = spotsIn(next->subject.window);
            ASSERT_FALSE(spots.empty());
            const std::size_t clicks = next->program.clicks().size();
            session.click(spots[static_cast<std::size_t>(i) * 7 % spots.size()]);
            arrived +=
                session.eventually([&] { return next->program.clicks().size() > clicks; }) ? 1 : 0;
            if (!session.windowManagerName()) {
                bringForward(*next);
            }
            wrong += wrongWithFocused(*next);
            focused = next;
        }
        record("focus by click", wrong);
        if (!hasManager()) {
            note("focus by click", "not offered");
        }
        EXPECT_EQ(arrived, 10);
        note("clicks through", std::to_string(arrived));
        const int corrections = std::max(ordersAsked(requests) - before - 10, 0);
        EXPECT_LE(corrections, 20);
        note("corrections", std::to_string(corrections));
    }

    // Requests by which the program changes the order: its own, or to the manager.
    int ordersAsked(RequestCounter &requests) {
        return requests.countOf(XCB_CONFIGURE_WINDOW) + requests.countOf(XCB_SEND_EVENT);
    }

    void focusByKeyboard() {
        if (GetParam().nextWindow.empty()) {
            note("focus by keyboard", "not offered");
            return;
        }
        const xcb_window_t before = session.activeWindow();
        const SubjectApplication *active = nullptr;
        const auto isAnother = [&] {
            const auto isActive = [&](const auto *application) {
                return application->subject.window == session.activeWindow();
            };
            const std::array all = {&red, &green, &blue};
            const auto found = std::ranges::find_if(all, isActive);
            active = found == all.end() ? nullptr : *found;
            return active != nullptr && active->subject.window != before;
        };
        // Some show a list until the last key goes up, and miss that if it comes too soon; and the
        // keys of some work only a while after they have started.
        const auto &keys = GetParam().nextWindow;
        for (int attempt = 0; attempt < 5 && !isAnother(); ++attempt) {
            session.setKey(keys.front(), true);
            session.press({keys.back()});
            session.eventually(isAnother, Seconds(0.3));
            session.setKey(keys.front(), false);
            session.eventually(isAnother, Seconds(2));
        }
        ASSERT_TRUE(isAnother());
        record("focus by keyboard", wrongWithOnly(*active));
    }

    void peek() {
        session.press({Key::command, Key::option, Key::tab});
        const auto wrong = wrongWith({red.subject, green.subject, blue.subject}, {});
        record("Peek", wrong + wrongWithOnly(green));
    }

    void fillTheScreen() {
        if (!isSupported("_NET_WM_STATE_FULLSCREEN")) {
            note("full screen", "not offered");
            return;
        }
        session.setState(green.subject.window, "_NET_WM_STATE_FULLSCREEN", true);
        const bool fills = session.eventually([&] {
            const auto area = session.screenArea();
            return std::ranges::all_of(
                std::vector<Spot>{{0, 0}, {area.width - 1, 0}, {area.width / 2, area.height - 1}},
                [&](const Spot &spot) { return session.pixel(spot) == green.subject.colour; });
        });
        session.setState(green.subject.window, "_NET_WM_STATE_FULLSCREEN", false);
        record("full screen", (fills ? "" : "not filled") + wrongWithOnly(green));
    }

    void keepAbove() {
        if (!isSupported("_NET_WM_STATE_ABOVE")) {
            note("kept above", "not offered");
            return;
        }
        session.setState(blue.subject.window, "_NET_WM_STATE_ABOVE", true);
        bringForward(red);
        const auto wrong = wrongWith({red.subject, blue.subject}, {green.subject});
        session.setState(blue.subject.window, "_NET_WM_STATE_ABOVE", false);
        bringForward(red);
        record("kept above", wrong + wrongWithOnly(red));
    }

    void openDockMenuAndDialog() {
        const std::vector<Subject> covered = {red.subject, blue.subject};
        bringForward(green);
        std::vector<Subject> clear = {green.subject};
        std::optional<SubjectApplication> dock;
        if (hasManager() && !session.windowManagerName()) {
            note("dock", "not offered"); // an ordinary window there
        } else {
            dock.emplace(
                desktop, "Dock",
                SampleWindow{.area = {0, 770, 1280, 30}, .colour = "#e0e0a0", .type = "DOCK"});
            clear.push_back(dock->subject);
            record("dock", wrongWith(clear, covered));
        }

        const auto spots = spotsIn(blue.subject.window);
        ASSERT_FALSE(spots.empty());
        const auto at = spots[spots.size() / 2];
        SubjectApplication menu(desktop, "Menu",
                                {.area = {at.x - 50, at.y - 30, 100, 60},
                                 .colour = "#f0d0f0",
                                 .type = "POPUP_MENU",
                                 .overrideRedirect = true});
        clear.push_back(menu.subject);
        record("menu", wrongWith(clear, covered));

        const auto owner = session.areaOf(green.subject.window);
        green.program.open({.title = "Dialog",
                            .area = {owner.x + 40, owner.y + 40, 200, 120},
                            .colour = "#d0f0e0",
                            .type = "DIALOG",
                            .transientFor = green.subject.window});
        const Subject dialog = {green.program.window(1), Colour::parse("#d0f0e0")};
        clear.push_back(dialog);
        record("dialog", wrongWith(clear, covered));
        green.program.closeWindow(1);
    }

    void minimise() {
        bringForward(green);
        if (!isSupported("_NET_WM_ACTION_MINIMIZE")) {
            note("minimising", "not offered");
            return;
        }
        session.minimise(green.subject.window);
        // Some keep it mapped where nothing is seen of it.
        const auto isHidden = [&] {
            const auto states = session.numbers(green.subject.window, "_NET_WM_STATE");
            return !session.isViewable(green.subject.window) ||
                   std::ranges::find(states, session.atom("_NET_WM_STATE_HIDDEN")) != states.end();
        };
        EXPECT_TRUE(session.eventually(isHidden));
        const bool isRedNext = session.eventually(
            [&] { return session.activeWindow() == red.subject.window; }, Seconds(0.3));
        if (!isRedNext) {
            bringForward(red);
        }
        auto wrong = wrongWith({red.subject}, {blue.subject});
        bringForward(green);
        wrong += wrongWithOnly(green);
        record("minimising", wrong);
    }

    void close() {
        bringForward(green);
        EXPECT_EQ(wrongWithOnly(green), "");
        if (isSupported("_NET_CLOSE_WINDOW")) {
            session.close(green.subject.window);
        } else {
            green.program.kill();
        }
        EXPECT_TRUE(session.eventually([&] { return !session.isViewable(green.subject.window); }));
        // Which window comes next is the manager's to say.
        std::string wrong;
        session.eventually([&] {
            wrong = wrongNow({red.subject}, {blue.subject});
            if (!wrong.empty() && wrongNow({blue.subject}, {red.subject}).empty()) {
                wrong.clear();
            }
            return wrong.empty();
        });
        record("closing", wrong);
    }

    void rest() {
        // Some go on with the windows for a while.
        session.eventually([&] {
            RequestCounter requests(desktop.displayName(), lumo->processIdentifier());
            session.remains([] { return true; }, Seconds(0.5));
            return requests.count() == 0;
        });
        RequestCounter requests(desktop.displayName(), lumo->processIdentifier());
        session.remains([] { return true; }, Seconds(idleSeconds()));
        EXPECT_EQ(requests.count(), 0) << requests.describe();
        note("idle requests", std::to_string(requests.count()));
    }
};

TEST_P(ManagersTest, ClearWindowThroughAllThatUsersDo) {
    note("two displays", "one desktop"); // unless DisplaysTest has another for each
    show();
    closeGuidance();
    focusByClick();
    focusByKeyboard();
    bringForward(green);
    EXPECT_EQ(wrongWithOnly(green), "");
    savePicture();
    peek();
    fillTheScreen();
    keepAbove();
    openDockMenuAndDialog();
    minimise();
    close();
    note("placement", placementSeen());
    EXPECT_EQ(placementSeen(), GetParam().placement) << lumo->process().report();
    rest();
}

// A manager that shows another desktop on each display.
struct DesktopPerDisplay {
    std::string name;
    WindowManager windowManager = WindowManager::none;
    std::uint32_t desktopOfSecond = 1; // the one that the second display shows at first

    friend std::ostream &operator<<(std::ostream &stream, const DesktopPerDisplay &manager) {
        return stream << manager.name;
    }
};

class DisplaysTest : public testing::TestWithParam<DesktopPerDisplay>, protected ThreeWindows {
  protected:
    DisplaysTest()
        : ThreeWindows({.windowManager = GetParam().windowManager,
                        .server = Server::xorg,
                        .outputs = {{0, {0, 0, 800, 600}, true}, {1, {800, 0, 800, 600}}}}) {}

    bool isOnSecond(const SubjectApplication &application) {
        return session.areaOf(application.subject.window).x >= 800;
    }

    // Of red and green, which share a display, either.
    std::string wrongWithBlueClear() {
        std::string wrong;
        session.eventually([&] {
            wrong = wrongNow({red.subject, blue.subject}, {green.subject});
            if (!wrong.empty() && wrongNow({green.subject, blue.subject}, {red.subject}).empty()) {
                wrong.clear();
            }
            return wrong.empty();
        });
        return wrong;
    }
};

TEST_P(DisplaysTest, EachHasItsClearWindow) {
    bringForward(red);
    const auto here = session.numbers(red.subject.window, "_NET_WM_DESKTOP");
    if (here.empty()) { // it tells nothing of its desktops
        session.move(blue.subject.window, isOnSecond(red) ? 100 : 900, 100);
    } else {
        session.sendToDesktop(blue.subject.window,
                              here.front() == 0 ? GetParam().desktopOfSecond : 0);
    }
    ASSERT_TRUE(session.eventually([&] { return isOnSecond(red) != isOnSecond(blue); }));
    show({red.subject, blue.subject}, {green.subject});
    bringForward(green);
    auto wrong = wrongWith({green.subject, blue.subject}, {red.subject});
    const auto spots = spotsIn(blue.subject.window);
    ASSERT_FALSE(spots.empty());
    session.click(spots[spots.size() / 2]);
    EXPECT_TRUE(session.eventually([&] { return session.activeWindow() == blue.subject.window; }));
    wrong += wrongWithBlueClear();
    EXPECT_EQ(wrong, "");
    ManagersTable::shared().set(GetParam().name, "two displays",
                                wrong.empty() ? "ok" : "**failed**");
}

INSTANTIATE_TEST_SUITE_P(
    All, DisplaysTest,
    testing::Values(DesktopPerDisplay{"i3-tiled", WindowManager::i3},
                    DesktopPerDisplay{"awesome", WindowManager::awesome, 9},
                    DesktopPerDisplay{"bspwm", WindowManager::bspwm},
                    DesktopPerDisplay{"spectrwm", WindowManager::spectrwm},
                    DesktopPerDisplay{"herbstluftwm", WindowManager::herbstluftwm},
                    DesktopPerDisplay{"enlightenment", WindowManager::enlightenment}),
    [](const auto &row) {
        std::string name = row.param.name;
        std::erase(name, '-');
        return name;
    });

class TableWriter : public testing::Environment {
    void TearDown() override { ManagersTable::shared().write(); }
};

const auto *const tableWriter = testing::AddGlobalTestEnvironment(new TableWriter);

INSTANTIATE_TEST_SUITE_P(All, ManagersTest, testing::ValuesIn(managers), [](const auto &row) {
    std::string name = row.param.name;
    std::erase(name, '-');
    return name;
});

} // namespace
} // namespace lumo::desktop
