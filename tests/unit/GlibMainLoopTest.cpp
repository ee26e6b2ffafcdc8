#include "platform/freedesktop/GlibMainLoop.h"

#include "bus/RunUntil.h"

#include <glib.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace lumo::freedesktop {
namespace {

using testing::ElementsAre;

// As when a task shows a dialog and waits for it.
TEST(GlibMainLoopTest, TasksMayTurnTheLoop) {
    GlibMainLoop loop;
    int depth = 0;
    int deepest = 0;
    int ticks = 0;
    bool closed = false;
    std::vector<int> posted;
    Handle other;
    const auto ticking = loop.every(0.001, [&] {
        deepest = std::max(deepest, ++depth);
        if (++ticks == 1) {
            loop.post([&] {
                posted.push_back(1);
                runUntil(loop, [&] { return posted.size() == 3; });
            });
            loop.post([&] { posted.push_back(2); });
            loop.post([&] { posted.push_back(3); });
            other = loop.after(0.01, [&] { closed = true; });
            runUntil(loop, [&] { return closed && posted.size() == 3; });
        }
        --depth;
    });
    runUntil(loop, [&] { return ticks >= 3; });
    EXPECT_EQ(deepest, 1) << "a timer's task does not run within itself";
    EXPECT_THAT(posted, ElementsAre(1, 2, 3));
}

TEST(GlibMainLoopTest, PostedTasksWaitForTheNextTurn) {
    std::vector<int> posted;
    {
        GlibMainLoop loop;
        loop.post([&] {
            posted.push_back(1);
            loop.post([&] { posted.push_back(3); });
        });
        loop.post([&] { posted.push_back(2); });
        g_main_context_iteration(nullptr, TRUE);
        EXPECT_THAT(posted, ElementsAre(1, 2));
    }
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    EXPECT_THAT(posted, ElementsAre(1, 2));
}

TEST(GlibMainLoopTest, TimersOfAnyTimeAndTheirRelease) {
    GlibMainLoop loop;
    int never = 0;
    const auto endless = loop.after(std::numeric_limits<double>::infinity(), [&never] { ++never; });
    const auto huge = loop.after(1e300, [&never] { ++never; });
    int runs = 0;
    std::vector<Handle> timers;
    for (const double seconds : {-1.0, 0.0, std::numeric_limits<double>::quiet_NaN()}) {
        timers.push_back(loop.after(seconds, [&, index = timers.size()] {
            timers[index].reset();
            ++runs;
        }));
    }
    runUntil(loop, [&] { return runs == 3; });
    Handle repeating;
    repeating = loop.every(0.001, [&] {
        ++runs;
        repeating.reset();
    });
    const auto end = loop.after(0.02, [&] { loop.quit(5); });
    EXPECT_EQ(loop.run(), 5);
    EXPECT_EQ(runs, 4);
    EXPECT_EQ(never, 0);
}

} // namespace
} // namespace lumo::freedesktop
