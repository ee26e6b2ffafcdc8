#include "platform/x11/server/X11Screens.h"

#include "MirroredDesktop.h"
#include "bus/RunUntil.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/server/ConnectionWatch.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::DesktopOptions;
using desktop::PrivateDesktop;
using desktop::Server;
using desktop::WindowManager;

// Screens on a private desktop, and how often they said that they changed.
class ScreensTest : public testing::Test {
  protected:
    explicit ScreensTest(const DesktopOptions &options = {.width = 2000,
                                                          .height = 1000,
                                                          .windowManager = WindowManager::none})
        : desktop_(options)
        , connection_(Connection::open(desktop_.displayName().c_str()))
        , watch_(x11::watch(loop_, *connection_, [] {}))
        , screens_(*connection_, loop_)
        , subscription_(screens_.onScreenParametersDidChange([this] { ++announcements_; })) {}

    // Turns the main loop until all that has happened on the server so far is known.
    void catchUp() {
        desktop_.session().stacking();
        bool hasReplied = false;
        connection_->whenReplied<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus(*connection_), [&](const auto *) { hasReplied = true; });
        ASSERT_TRUE(runUntil(loop_, [&] { return hasReplied && screens_.isSettled(); }));
    }

    void setResources(const std::string &text) {
        auto &session = desktop_.session();
        session.setText(session.root(), "RESOURCE_MANAGER", "STRING", text);
    }

    std::vector<Rect> frames() const {
        std::vector<Rect> frames;
        for (const auto &screen : screens_.screens()) {
            frames.push_back(screen.frame);
        }
        return frames;
    }

    std::uint32_t numberAt(std::size_t index) const {
        return screens_.screens().at(index).number.value();
    }

    std::vector<Screen> screensOfNextRun() { return X11Screens(*connection_, loop_).screens(); }

    PrivateDesktop desktop_;
    freedesktop::GlibMainLoop loop_;
    std::unique_ptr<Connection> connection_;
    Handle watch_;
    X11Screens screens_;
    int announcements_ = 0;
    Handle subscription_;
};

TEST_F(ScreensTest, MonitorsComeGoAndChange) {
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 2000, 1000}}));
    const auto whole = numberAt(0);

    desktop_.setMonitor("LEFT", {0, 200, 800, 800}, true);
    desktop_.setMonitor("RIGHT", {800, 100, 1200, 600}, false);
    catchUp();
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 800, 800}, {800, 300, 1200, 600}}));
    EXPECT_EQ(screens_.pixelRects(),
              (std::vector<drawing::PixelRect>{{0, 200, 800, 800}, {800, 100, 1200, 600}}));
    EXPECT_EQ(screens_.pointSpace().windowBounds({0, 100, 10, 10}), (Rect{0, 0, 10, 10}))
        << "bounds begin at the highest screen edge, not at the root's";
    const auto left = numberAt(0);
    const auto right = numberAt(1);
    EXPECT_TRUE(left != 0 && right != 0 && left != right && left != whole);
    EXPECT_GT(std::exchange(announcements_, 0), 0);

    desktop_.removeMonitor("RIGHT");
    catchUp();
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 800, 800}}));
    EXPECT_EQ(std::exchange(announcements_, 0), 1);

    desktop_.setMonitor("RIGHT", {800, 0, 400, 1000}, false);
    catchUp();
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 800, 800}, {800, 0, 400, 1000}}));
    EXPECT_EQ(numberAt(1), right) << "the same display again";
    EXPECT_EQ(screensOfNextRun(), screens_.screens()) << "and in the next run";
    EXPECT_EQ(std::exchange(announcements_, 0), 1);

    desktop_.removeMonitor("LEFT");
    desktop_.removeMonitor("RIGHT");
    catchUp();
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 2000, 1000}}));
    EXPECT_EQ(numberAt(0), whole);
}

TEST_F(ScreensTest, ScaleOfTheResources) {
    setResources("*foreground:\tblack\nXft.dpi:\t144\nXft.hinting:\t1\n");
    catchUp();
    EXPECT_EQ(announcements_, 1);
    EXPECT_EQ(screens_.screens().at(0).backingScaleFactor, 1.5);
    EXPECT_EQ(screens_.pointSpace().pixelsOfFrame(frames().at(0)), screens_.pixelRects().at(0));
    setResources("Xft.dpi:\t143\n");
    catchUp();
    EXPECT_EQ(announcements_, 1) << "the same quarter step";

    for (const auto &[factor, scale] : {std::pair("2", 3.0), std::pair("large", 1.5)}) {
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread runs
        setenv("QT_SCALE_FACTOR", factor, 1);
        EXPECT_EQ(screensOfNextRun().at(0).backingScaleFactor, scale);
    }
    unsetenv("QT_SCALE_FACTOR"); // NOLINT(concurrency-mt-unsafe): the same
}

// On a server whose outputs come, go and change their modes, which each takes several steps.
class ScreensOfOutputsTest : public ScreensTest {
  protected:
    ScreensOfOutputsTest()
        : ScreensTest({.windowManager = WindowManager::none, .server = Server::xorg}) {}

    // One per display, the main one first.
    std::vector<std::uint32_t> numbersAfter(const std::vector<desktop::OutputUse> &uses) {
        desktop_.arrangeOutputs(uses);
        catchUp();
        std::vector<std::uint32_t> numbers;
        for (const auto &screen : screens_.screens()) {
            numbers.push_back(screen.number.value());
        }
        return numbers;
    }
};

TEST_F(ScreensOfOutputsTest, NumbersStayWhateverOtherOutputsDo) {
    const auto both = numbersAfter({{0, {0, 0, 800, 600}, true}, {2, {800, 0, 640, 480}}});
    ASSERT_EQ(both.size(), 2U);
    const auto first = both[0];
    const auto second = both[1];
    using Numbers = std::vector<std::uint32_t>;
    EXPECT_EQ(numbersAfter({{2, {0, 0, 640, 480}, true}}), Numbers{second});
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 640, 480}}));
    EXPECT_EQ(numbersAfter({{0, {640, 0, 1000, 600}}, {2, {0, 0, 640, 480}, true}}),
              (Numbers{second, first}));
    EXPECT_EQ(numbersAfter({{0, {640, 0, 1000, 600}, true}, {2, {0, 0, 640, 480}}}),
              (Numbers{first, second}))
        << "the main one is the first";
    const auto three = numbersAfter(
        {{0, {0, 0, 800, 600}, true}, {1, {800, 0, 800, 600}}, {2, {1600, 0, 640, 480}}});
    ASSERT_EQ(three.size(), 3U);
    EXPECT_EQ(three[0], first);
    EXPECT_EQ(three[2], second);
    EXPECT_EQ(numbersAfter({{0, {0, 0, 800, 600}, true}, {2, {0, 0, 640, 480}}}), Numbers{first})
        << "mirrored ones are one";
    EXPECT_EQ(numbersAfter({}), Numbers{});
    EXPECT_EQ(numbersAfter({{2, {0, 0, 640, 480}}, {0, {640, 0, 800, 600}}}).size(), 2U);
}

TEST_F(ScreensOfOutputsTest, StormOfChangesIsAnnouncedOnce) {
    numbersAfter({{0, {0, 0, 800, 600}, true}});
    announcements_ = 0;
    const double began = loop_.now();
    for (int i = 0; i < 20; ++i) {
        desktop_.arrangeOutputs(i % 2 == 0
                                    ? std::vector<desktop::OutputUse>{{0, {0, 0, 800, 600}, true},
                                                                      {1, {800, 0, 640, 480}}}
                                    : std::vector<desktop::OutputUse>{{1, {0, 0, 640, 480}, true}});
        while (loop_.now() < began + (i + 1) * 0.005) {
            g_main_context_iteration(nullptr, FALSE);
        }
    }
    // A busy machine may take longer than one burst is waited for.
    const int bursts = 1 + static_cast<int>((loop_.now() - began) / 0.5);
    catchUp();
    EXPECT_GE(announcements_, 1);
    EXPECT_LE(announcements_, bursts);
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 640, 480}}));
}

} // namespace
} // namespace lumo::x11
