#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"
#include "platform/x11/server/EventKinds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace lumo::x11 {
namespace {

using desktop::SampleApplication;

class OverlayOrder : public testing::Test, protected OverlayDesktop {
  protected:
    OverlayOrder()
        : OverlayDesktop({.width = 800, .height = 600}) {
        settle();
    }

    static xcb_window_t idOf(const PlatformWindow &overlay) {
        return static_cast<xcb_window_t>(overlay.windowNumber());
    }

    // The visible children of the root window from the bottom to the top: the index of a sample
    // window as a digit, "o" and "p" for the overlays, nothing for others.
    std::string order(const PlatformWindow *o, const PlatformWindow *p = nullptr) {
        std::string text;
        for (const auto child : session.stacking()) {
            if (!session.isViewable(child)) {
                continue;
            }
            if (o != nullptr && child == idOf(*o)) {
                text += 'o';
            } else if (p != nullptr && child == idOf(*p)) {
                text += 'p';
            }
            for (std::size_t index = 0; index < 6; ++index) {
                if (session.frameOf(app_.window(index)) == child) {
                    text += std::to_string(index);
                }
            }
        }
        return text;
    }

    // Sixty ticks with the same wish; the requests they made, in bytes.
    std::uint64_t bytesOfTicks(const std::function<void()> &wish) {
        std::uint64_t bytes = 0;
        for (int tick = 0; tick < 60; ++tick) {
            wish();
            bytes += bytesOfTurn();
        }
        return bytes;
    }

    SampleApplication app_{desktop,
                           "Sample",
                           {{.area = {20, 60, 300, 250}},
                            {.area = {150, 180, 300, 250}},
                            {.area = {300, 300, 300, 250}},
                            {.area = {0, 570, 800, 30}, .type = "DOCK"},
                            {.area = {600, 20, 150, 100}, .state = "ABOVE"},
                            {.area = {700, 400, 80, 100}, .overrideRedirect = true}}};
};

TEST_F(OverlayOrder, BelowTheReferenceOrInFrontWithoutARequestPerTick) {
    const auto overlay = overlays->makeWindow(frame());
    overlay->commit(tree(frame()));
    session.activate(app_.window(1));
    EXPECT_TRUE(eventually([&] {
        overlay->orderBelow(app_.window(1));
        return order(overlay.get()).substr(0, 4) == "02o1";
    })) << order(overlay.get());
    settle();
    EXPECT_EQ(bytesOfTicks([&] {
                  overlay->setFrame(frame());
                  overlay->setLevel(0);
                  overlay->setAlphaValue(1);
                  overlay->orderBelow(app_.window(1));
                  overlay->commit(tree(frame()));
              }),
              0);

    // The window manager raises another window over it: it stays with its reference.
    session.activate(app_.window(0));
    settle();
    EXPECT_EQ(bytesOfTicks([&] { overlay->orderBelow(app_.window(1)); }), 0);
    EXPECT_EQ(order(overlay.get()).substr(0, 4), "2o10");

    // In front it goes after each window that comes up, but not over what is kept on top.
    overlay->orderFront();
    settle();
    EXPECT_EQ(order(overlay.get()).substr(0, 4), "210o");
    session.activate(app_.window(2));
    EXPECT_TRUE(eventually([&] {
        overlay->orderFront();
        return order(overlay.get()).substr(0, 4) == "102o";
    })) << order(overlay.get());
    settle();
    EXPECT_EQ(bytesOfTicks([&] { overlay->orderFront(); }), 0);

    // Nor over this program's own windows.
    const auto own = session.openWindow(session.picture({0, 0, 200, 200}));
    mirror->setInterfaceWindow(own);
    EXPECT_TRUE(eventually([&] {
        const auto *window = mirror->find(own);
        return window != nullptr && window->isDescribed && window->isMapped;
    }));
    session.activate(own);
    settle();
    EXPECT_TRUE(session.isAbove(session.frameOf(own), idOf(*overlay)));
    EXPECT_EQ(order(overlay.get()).substr(0, 4), "102o");

    // A reference that is minimised, or gone, leaves it where it is.
    session.minimise(app_.window(0));
    EXPECT_TRUE(eventually([&] { return !mirror->find(app_.window(0))->isMapped; }));
    settle();
    overlay->orderBelow(app_.window(0));
    overlay->orderBelow(0x123456);
    settle();
    EXPECT_EQ(order(overlay.get()).substr(0, 3), "12o");
    EXPECT_EQ(bytesOfTicks([&] { overlay->orderBelow(0x123456); }), 0);

    // Never on screen without a place that is known.
    const auto other = overlays->makeWindow(frame());
    other->orderBelow(0x123456);
    settle();
    EXPECT_FALSE(session.isViewable(idOf(*other)));
}

TEST_F(OverlayOrder, TwoOverlaysLeaveEachOtherInPlace) {
    const auto left = overlays->makeWindow({0, 0, 400, 600});
    const auto right = overlays->makeWindow({400, 0, 400, 600});
    session.activate(app_.window(1));
    EXPECT_TRUE(eventually([&] { return order(nullptr).substr(0, 3) == "021"; }));
    settle();
    using Wish = std::pair<std::function<void()>, std::vector<std::string>>; // and its outcomes
    const std::vector<Wish> wishes = {
        {[&] {
             left->orderBelow(app_.window(1));
             right->orderBelow(app_.window(1));
         },
         {"02op1", "02po1"}},
        {[&] {
             left->orderBelow(app_.window(2));
             right->orderFront();
         },
         {"0o21p"}},
        {[&] {
             left->orderFront();
             right->orderFront();
         },
         {"021op", "021po"}},
    };
    for (const auto &[wish, allowed] : wishes) {
        wish();
        settle();
        EXPECT_THAT(allowed, testing::Contains(order(left.get(), right.get()).substr(0, 5)));
        EXPECT_EQ(bytesOfTicks(wish), 0);
    }
}

// A client that takes the overlay out of its place again and again gets it on top, with cut-outs;
// one that takes it from there as well is answered ever more seldom. What is seen is the same all
// the time.
TEST_F(OverlayOrder, RestackingContestEndsOnTopWithCutOuts) {
    const auto overlay = overlays->makeWindow(frame());
    overlay->commit(tree(frame()));
    overlay->orderBelow(app_.window(2));
    settle();
    ASSERT_EQ(order(overlay.get()).substr(0, 4), "01o2");
    const auto clearSpot = session.areaOf(app_.window(2));
    const auto coveredSpot = session.areaOf(app_.window(0));
    const desktop::Colour plain = {0x80, 0x80, 0x80};
    const auto isRight = [&] {
        return session.pixel(clearSpot.x + 150, clearSpot.y + 150) == plain &&
               distance(session.pixel(coveredSpot.x + 50, coveredSpot.y + 50), plain) > 20;
    };
    EXPECT_TRUE(eventually(isRight));

    auto *client = session.connection();
    std::optional<std::uint32_t> restack = XCB_STACK_MODE_ABOVE;
    int changes = 0;
    const auto watch = connection->events().on(event::configureNotify, idOf(*overlay),
                                               [&](const auto &) { ++changes; });
    const auto ticks = loop.every(1.0 / 60, [&] {
        if (restack) {
            xcb_configure_window(client, idOf(*overlay), XCB_CONFIG_WINDOW_STACK_MODE, &*restack);
            xcb_flush(client);
        }
        overlay->orderBelow(app_.window(2));
    });
    EXPECT_TRUE(eventually([&] { return lines.size() == 1; }));
    EXPECT_LE(changes, 30) << "each round of the contest takes two";
    EXPECT_TRUE(eventually(isRight));
    settle();
    changes = 0;
    settle();
    EXPECT_EQ(changes, 0) << "on top nothing is contested";

    restack = XCB_STACK_MODE_BELOW;
    EXPECT_TRUE(eventually([&] { return lines.size() == 2; }));
    changes = 0;
    const double start = loop.now();
    EXPECT_TRUE(eventually([&] { return loop.now() - start > 0.8; }));
    EXPECT_LE(changes, 4);
    restack.reset();
    EXPECT_TRUE(eventually(isRight));
    EXPECT_EQ(lines.size(), 2);
    EXPECT_THAT(order(overlay.get()), testing::HasSubstr("o5")) << "what floats needs no cut-out";
}

TEST_F(OverlayOrder, ClicksGoThroughDuringAResize) {
    const auto overlay = overlays->makeWindow(frame());
    overlay->commit(tree(frame()));
    overlay->orderFront();
    settle();
    std::size_t clicks = 0;
    const auto bothSizes = {frame(), Rect{30, 40, 700, 500}};
    for (int round = 0; round < 20; ++round) {
        for (const auto &size : bothSizes) {
            overlay->setFrame(size);
            overlay->commit(tree(size));
            bytesOfTurn();
            session.click({40 + 10 * round, 120});
            ++clicks;
        }
    }
    EXPECT_TRUE(eventually([&] { return app_.clicks().size() == clicks; }))
        << app_.clicks().size() << " of " << clicks;
    EXPECT_TRUE(session.isViewable(idOf(*overlay)));
    session.setNumbers(idOf(*overlay), "_NET_WM_WINDOW_OPACITY", {0x80000000});
    EXPECT_TRUE(eventually([&] { return lines.size() == 1; }));
}

TEST(OverlaySize, MoreThanTheServerHoldsIsRefusedWithALine) {
    OverlayDesktop desktop({.width = 800, .height = 600, .serverArguments = {"-ld", "1000000"}});
    desktop.settle();
    const auto overlay = desktop.overlays->makeWindow({0, 0, 20000, 20000});
    const auto isShown = [&] {
        return desktop.session.isViewable(static_cast<xcb_window_t>(overlay->windowNumber()));
    };
    overlay->commit(desktop.tree(desktop.frame()));
    overlay->orderFront();
    EXPECT_TRUE(desktop.eventually([&] { return !desktop.lines.empty(); }));
    desktop.settle();
    EXPECT_THAT(desktop.lines,
                testing::ElementsAre("[Lumo] The X server has no memory for an overlay of 20000 x "
                                     "20000 pixels; none is shown"));
    EXPECT_FALSE(isShown());
    overlay->setFrame(desktop.frame());
    EXPECT_TRUE(desktop.eventually(isShown));
}

} // namespace
} // namespace lumo::x11
