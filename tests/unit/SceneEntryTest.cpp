#include "platform/x11/painting/SceneEntry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace lumo::x11 {
namespace {

using drawing::PixelRect;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

SceneEntry entry(xcb_window_t window, const PixelRect &geometry) {
    return {window, geometry, geometry};
}

TEST(SceneEntry, OnlyWhatMovedInTheStackingOrderHasChanged) {
    std::vector<SceneEntry> stack;
    for (int i = 1; i <= 5; ++i) {
        stack.push_back(entry(static_cast<xcb_window_t>(i), {i, 0, 10, 10}));
    }
    EXPECT_THAT(changedAreas(stack, stack), IsEmpty());
    auto raised = stack;
    std::ranges::rotate(raised, raised.begin() + 1);
    EXPECT_THAT(changedAreas(stack, raised),
                UnorderedElementsAre(PixelRect{1, 0, 10, 10}, PixelRect{1, 0, 10, 10}));
    auto moved = stack;
    moved[2].geometry.x = 70;
    EXPECT_THAT(changedAreas(stack, moved),
                UnorderedElementsAre(PixelRect{3, 0, 10, 10}, PixelRect{70, 0, 10, 10}));
}

std::vector<SceneEntry> entriesAt(const std::vector<SceneEntry> &entries, int x) {
    std::vector<SceneEntry> found;
    std::ranges::copy_if(entries, std::back_inserter(found), [&](const SceneEntry &each) {
        return x >= each.geometry.x && x < each.geometry.x + each.geometry.width;
    });
    return found;
}

TEST(SceneEntry, NothingChangesOutsideTheAreas) {
    std::mt19937 random(7);
    const auto below = [&](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    constexpr int width = 24;
    std::vector<SceneEntry> before;
    for (int step = 0; step < 2000; ++step) {
        auto after = before;
        for (int change = below(4); change > 0; --change) {
            const auto at =
                after.begin() + (after.empty() ? 0 : below(static_cast<int>(after.size())));
            if (after.empty() || below(3) == 0) {
                after.insert(at, entry(static_cast<xcb_window_t>(1000 + 10 * step + change),
                                       {below(width), 0, 1 + below(6), 1}));
            } else if (after.size() > 9 || below(3) == 0) {
                after.erase(at);
            } else if (below(2) == 0) {
                std::rotate(at, at + 1, after.end());
            } else {
                at->version += 1;
            }
        }
        const auto areas = changedAreas(before, after);
        for (int x = 0; x < width + 6; ++x) {
            const bool isInside = std::ranges::any_of(areas, [&](const PixelRect &area) {
                return x >= area.x && x < area.x + area.width;
            });
            ASSERT_TRUE(isInside || entriesAt(before, x) == entriesAt(after, x))
                << "step " << step << ", at " << x;
        }
        before = after;
    }
}

} // namespace
} // namespace lumo::x11
