#include "platform/x11/server/Monitor.h"
#include "platform/x11/server/ResourceScale.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace lumo::x11 {
namespace {

TEST(ScaleOfResources, QuarterStepsAndAtLeastOne) {
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

TEST(Monitors, MonitorsShareNoPixel) {
    struct Case {
        const char *name;
        std::vector<drawing::PixelRect> given;
        std::vector<drawing::PixelRect> expected;
    };
    const std::vector<Case> cases = {
        {"side by side", {{0, 0, 8, 6}, {8, 0, 8, 6}}, {{0, 0, 8, 6}, {8, 0, 8, 6}}},
        {"clones", {{0, 0, 8, 6}, {0, 0, 8, 6}, {0, 0, 8, 6}}, {{0, 0, 8, 6}}},
        {"a smaller clone", {{0, 0, 8, 6}, {0, 0, 6, 6}}, {{0, 0, 8, 6}}},
        {"a larger clone", {{0, 0, 6, 6}, {0, 0, 8, 6}}, {{0, 0, 8, 6}}},
        {"common on the left", {{0, 0, 8, 6}, {7, 0, 8, 6}}, {{0, 0, 8, 6}, {8, 0, 7, 6}}},
        {"common on the right", {{7, 0, 8, 6}, {0, 0, 8, 6}}, {{7, 0, 8, 6}, {0, 0, 7, 6}}},
        {"common at the top", {{0, 0, 8, 6}, {0, 5, 8, 6}}, {{0, 0, 8, 6}, {0, 6, 8, 5}}},
        {"common at the bottom", {{0, 5, 8, 6}, {0, 0, 8, 6}}, {{0, 5, 8, 6}, {0, 0, 8, 5}}},
        {"a common corner", {{0, 0, 8, 6}, {6, 4, 8, 6}}, {{0, 0, 14, 10}}},
        {"one over two",
         {{0, 0, 8, 6}, {8, 0, 8, 6}, {4, 2, 8, 6}},
         {{0, 0, 12, 8}, {12, 0, 4, 6}}},
        {"an empty one", {{0, 0, 8, 6}, {2, 2, 0, 0}}, {{0, 0, 8, 6}}},
        {"beyond the root window",
         {{0, 0, 8, 6}, {8, 0, 30000, 30000}, {20, 0, 4, 4}},
         {{0, 0, 8, 6}, {8, 0, 8, 16}}},
    };
    for (const auto &[name, given, expected] : cases) {
        std::vector<Monitor> monitors;
        monitors.reserve(given.size());
        for (const auto &area : given) {
            monitors.push_back({area, false, std::to_string(monitors.size()), {}});
        }
        std::vector<drawing::PixelRect> areas;
        monitors = apart(std::move(monitors), {0, 0, 16, 16});
        for (const auto &monitor : monitors) {
            areas.push_back(monitor.area);
        }
        EXPECT_EQ(areas, expected) << name;
        EXPECT_EQ(monitors.at(0).name, "0") << name;
    }
}

TEST(Monitors, KeepTheirNumbersInAnyOrderAndCompany) {
    const Monitor panel{{}, true, "eDP-1", "panel"};
    const Monitor desk{{}, false, "DP-1", "desk"};
    const Monitor beamer{{}, false, "DP-1", "beamer"};
    const auto numbers = identifiersOf({panel, desk, beamer});
    EXPECT_NE(numbers[0], numbers[1]);
    EXPECT_NE(numbers[1], numbers[2]) << "the same output, another display";
    EXPECT_EQ(identifiersOf({beamer, panel}), (std::vector{numbers[2], numbers[0]}));
    const auto twins = identifiersOf({desk, desk});
    EXPECT_NE(twins[0], twins[1]);
    EXPECT_EQ(twins[0], numbers[1]);
}

} // namespace
} // namespace lumo::x11
