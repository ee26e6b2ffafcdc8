#include "platform/x11/X11Screens.h"

#include "MirroredDesktop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::PrivateDesktop;
using desktop::WindowManager;

// Screens on a private desktop, and how often they said that they changed.
class ScreensTest : public testing::Test {
  protected:
    explicit ScreensTest(std::vector<std::string> serverArguments = {})
        : desktop_({.width = 2000,
                    .height = 1000,
                    .windowManager = WindowManager::none,
                    .serverArguments = std::move(serverArguments)})
        , connection_(Connection::open(desktop_.displayName().c_str()))
        , screens_(*connection_)
        , subscription_(screens_.onScreenParametersDidChange([this] { ++announcements_; })) {}

    // Dispatches all that has happened on the server so far and what is read because of it.
    void catchUp() {
        desktop_.session().stacking();
        for (int round = 0; round < 6; ++round) {
            bool hasReplied = false;
            connection_->whenReplied<xcb_get_input_focus_reply_t>(
                xcb_get_input_focus(*connection_), [&](const auto *) { hasReplied = true; });
            ASSERT_TRUE(connection_->dispatchUntil([&] { return hasReplied; }, 10));
        }
    }

    void setResources(const std::string &text) {
        auto &session = desktop_.session();
        xcb_change_property(session.connection(), XCB_PROP_MODE_REPLACE, session.root(),
                            XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(text.size()), text.data());
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

    PrivateDesktop desktop_;
    std::unique_ptr<Connection> connection_;
    X11Screens screens_;
    int announcements_ = 0;
    Handle subscription_;
};

TEST_F(ScreensTest, FollowMonitorsThatComeGoAndChange) {
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 2000, 1000}}));
    const auto whole = numberAt(0);

    desktop_.setMonitor("LEFT", {0, 200, 800, 800}, true);
    desktop_.setMonitor("RIGHT", {800, 100, 1200, 600}, false);
    catchUp();
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 800, 800}, {800, 300, 1200, 600}}));
    EXPECT_EQ(screens_.pixelRects(),
              (std::vector<PixelRect>{{0, 200, 800, 800}, {800, 100, 1200, 600}}));
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
    EXPECT_EQ(X11Screens(*connection_).screens(), screens_.screens()) << "and in the next run";
    EXPECT_EQ(std::exchange(announcements_, 0), 1);

    desktop_.setMonitor("MIRROR", {800, 0, 400, 1000}, false);
    catchUp();
    EXPECT_EQ(frames().size(), 2U) << "one that shows the same as another is no further screen";
    EXPECT_EQ(announcements_, 0);

    desktop_.removeMonitor("MIRROR");
    desktop_.removeMonitor("LEFT");
    desktop_.removeMonitor("RIGHT");
    catchUp();
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 2000, 1000}}));
    EXPECT_EQ(numberAt(0), whole);
}

TEST_F(ScreensTest, ReadOnceForAStormAndStayQuietWhenNothingChanged) {
    desktop_.setMonitor("A", {0, 0, 1000, 1000}, true);
    catchUp();
    announcements_ = 0;
    const auto bytesOf = [&](int changes) {
        for (int i = 0; i < changes; ++i) {
            desktop_.setMonitor("A", {0, 0, 1000, 1000}, true);
        }
        const auto before = connection_->bytesSent();
        connection_->dispatch();
        connection_->flush();
        const auto sent = connection_->bytesSent() - before;
        catchUp();
        return sent;
    };
    EXPECT_EQ(bytesOf(0), 0U);
    const auto once = bytesOf(1);
    EXPECT_GT(once, 0U);
    EXPECT_EQ(bytesOf(20), once);
    EXPECT_EQ(announcements_, 0);
}

TEST_F(ScreensTest, TakeTheirScaleFromTheResources) {
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
        EXPECT_EQ(X11Screens(*connection_).screens().at(0).backingScaleFactor, scale);
    }
    unsetenv("QT_SCALE_FACTOR"); // NOLINT(concurrency-mt-unsafe): the same
}

TEST(ScaleOfResources, IsInQuarterStepsAndAtLeastOne) {
    const std::vector<std::pair<const char *, double>> cases = {
        {"", 1},
        {"Xft.dpi: 96", 1},
        {"Xft.dpi:\t72\n", 1},
        {"Xft.dpi:\t108\n", 1.25},
        {"Xft.dpi:\t107.9\n", 1},
        {"Xft.dpi:\t120\nother: 1", 1.25},
        {"a: b\nXft.dpi:\t192", 2},
        {"Xft.dpi:\t0", 1},
        {"Xft.dpi:\t-96", 1},
        {"Xft.dpi:\tnan", 1},
        {"myXft.dpi:\t192", 1},
        {"Xft.dpi:\n192", 1},
    };
    for (const auto &[resources, scale] : cases) {
        EXPECT_EQ(scaleOfResources(resources), scale) << resources;
    }
}

class ScreensWithoutRandrTest : public ScreensTest {
  protected:
    ScreensWithoutRandrTest()
        : ScreensTest({"-extension", "RANDR"}) {}
};

TEST_F(ScreensWithoutRandrTest, AreOneOfTheRootWindowsSize) {
    ASSERT_FALSE(connection_->extensions().randr);
    EXPECT_EQ(frames(), (std::vector<Rect>{{0, 0, 2000, 1000}}));
    EXPECT_NE(numberAt(0), 0U);
}

} // namespace
} // namespace lumo::x11
