#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

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
            for (std::size_t index = 0; index < count_; ++index) {
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
    std::size_t count_ = 6;
};

TEST_F(OverlayOrder, IsBelowTheReferenceOrAboveAllOrdinaryWindowsAndCostsNothingWhileItHolds) {
    const auto overlay = overlays->makeWindow(frame());
    overlay->commit(tree(frame()));
    for (const std::size_t clear : {std::size_t{0}, std::size_t{2}, std::size_t{1}}) {
        session.activate(app_.window(clear));
        overlay->orderBelow(app_.window(clear));
        const auto wanted = "o" + std::to_string(clear);
        EXPECT_TRUE(eventually([&] {
            overlay->orderBelow(app_.window(clear));
            const auto found = order(overlay.get());
            return found.find(wanted) == 2;
        })) << clear
            << " " << order(overlay.get());
    }
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

TEST_F(OverlayOrder, OfTwoDisplaysIsNoFight) {
    const auto left = overlays->makeWindow({0, 0, 400, 600});
    const auto right = overlays->makeWindow({400, 0, 400, 600});
    session.activate(app_.window(1));
    settle();
    struct Wish {
        std::function<void()> wish;
        std::vector<std::string> allowed;
    };
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
    for (const auto &wish : wishes) {
        wish.wish();
        settle();
        EXPECT_THAT(wish.allowed, testing::Contains(order(left.get(), right.get()).substr(0, 5)));
        EXPECT_EQ(bytesOfTicks(wish.wish), 0);
    }
}

TEST_F(OverlayOrder, IsPutBackOnlySoOftenAgainstSomebodyWhoFightsIt) {
    const auto overlay = overlays->makeWindow(frame());
    overlay->orderBelow(app_.window(2));
    settle();
    auto *enemy = session.connection();
    bool fights = true;
    int corrections = 0;
    const auto fight = connection->onEvent([&](const xcb_generic_event_t &event) {
        const auto &configure = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        if ((event.response_type & 0x7f) == XCB_CONFIGURE_NOTIFY &&
            configure.window == idOf(*overlay)) {
            ++corrections;
        }
    });
    const auto ticks = loop.every(1.0 / 60, [&] {
        if (fights) {
            const std::uint32_t above = XCB_STACK_MODE_ABOVE;
            xcb_configure_window(enemy, idOf(*overlay), XCB_CONFIG_WINDOW_STACK_MODE, &above);
            xcb_flush(enemy);
        }
        overlay->orderBelow(app_.window(2));
    });
    EXPECT_TRUE(eventually([&] { return lines.size() == 1; }));
    fights = false;
    EXPECT_TRUE(eventually([&] { return order(overlay.get()).substr(0, 4) == "01o2"; }));
    // Each round of the fight takes two changes.
    EXPECT_LE(corrections, 100);
    EXPECT_EQ(lines.size(), 1);
}

TEST_F(OverlayOrder, LetsClicksThroughEvenWhileItIsResized) {
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
}

TEST_F(OverlayOrder, TellsManagersToLeaveItAlone) {
    const auto overlay = overlays->makeWindow(frame());
    const auto window = idOf(*overlay);
    EXPECT_TRUE(session.isOverrideRedirect(window));
    EXPECT_EQ(session.classOf(window), "Lumo");
    EXPECT_EQ(session.numbers(window, "_NET_WM_BYPASS_COMPOSITOR"), std::vector<std::uint32_t>{2});
    EXPECT_EQ(session.numbers(window, "_NET_WM_PID"),
              std::vector<std::uint32_t>{static_cast<std::uint32_t>(getpid())});
}

} // namespace
} // namespace lumo::x11
