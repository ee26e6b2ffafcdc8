#include "drawing/CutOuts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <random>
#include <string>

namespace lumo::drawing {
namespace {

using StackingLayer = CutOutWindow::Layer;

// The windows' letters, the topmost first, in capitals where one is covered.
std::string letters(std::span<const CutOutPiece> pieces) {
    std::string text;
    for (const auto &piece : pieces) {
        const auto letter = static_cast<int>(piece.window);
        text += static_cast<char>(piece.isClear ? letter : std::toupper(letter));
    }
    return text;
}

TEST(CutOuts, WindowsThatTheRuleKeepsClear) {
    constexpr PixelRect overlay = {0, 0, 800, 600};
    const std::vector<CutOutWindow> plain = {
        {.id = 'm', .area = {700, 400, 80, 100}, .layer = StackingLayer::floating},
        {.id = 'd', .area = {0, 570, 800, 30}, .layer = StackingLayer::above},
        {.id = 'h', .area = {400, 300, 150, 100}},
        {.id = 'a', .area = {20, 40, 100, 540}},
        {.id = 'u'}, // nothing is seen of it
        {.id = 'r', .area = {150, 180, 300, 250}},
        {.id = 'l', .area = {20, 60, 300, 250}},
        {.id = 'w', .area = {20, 500, 300, 50}, .layer = StackingLayer::floating},
        {.id = 'b', .area = overlay, .layer = StackingLayer::below},
    };
    const auto with = [&](char id, bool CutOutWindow::*what) {
        auto windows = plain;
        (*std::ranges::find(windows, static_cast<std::uint32_t>(id), &CutOutWindow::id)).*what =
            true;
        return windows;
    };
    const auto dialog = with('a', &CutOutWindow::isDialogOfReference);
    const auto own = with('h', &CutOutWindow::isOwn);
    const auto ownBeneath = with('r', &CutOutWindow::isOwn);
    const auto focused = with('l', &CutOutWindow::isFocused);
    struct Case {
        const char *name;
        CutOutRule rule;
        const std::vector<CutOutWindow> &windows;
        PixelRect overlay;
        std::string pieces;
    };
    const std::vector<Case> cases = {
        {"in front", {}, plain, overlay, "md"},
        {"in front, own", {}, own, overlay, "mdh"},
        {"in front, own beneath others", {}, ownBeneath, overlay, "md"},
        {"in front, no raise", {.focusRaises = false}, ownBeneath, overlay, "mdHr"},
        {"in front of all layers", {.coversLayersAbove = true}, plain, overlay, ""},
        {"below a window", {.reference = 'r'}, plain, overlay, "mdhar"},
        {"below the lowest", {.reference = 'l'}, plain, overlay, "mdharl"},
        {"below a menu", {.reference = 'm'}, plain, overlay, "md"},
        {"no raise", {.reference = 'r', .focusRaises = false}, plain, overlay, "mdhr"},
        {"no raise, dialog", {.reference = 'r', .focusRaises = false}, dialog, overlay, "mdhar"},
        {"no raise, focus", {.reference = 'r', .focusRaises = false}, focused, overlay, "mdhArl"},
        {"reference gone",
         {.reference = 'x', .clearBefore = {'x', 'r', 'b'}},
         plain,
         overlay,
         "mdHr"},
        {"reference unseen", {.reference = 'u'}, plain, overlay, "mdha"},
        {"another display", {.reference = 'r'}, plain, {440, 0, 200, 500}, "hr"},
    };
    for (const auto &[name, rule, windows, area, expected] : cases) {
        EXPECT_EQ(letters(cutOutPieces(windows, clearWindows(windows, rule), area)), expected)
            << name;
    }
}

TEST(CutOuts, PixelsWhoseTopmostWindowIsClear) {
    constexpr int size = 12;
    const auto seed = testing::UnitTest::GetInstance()->random_seed();
    SCOPED_TRACE(seed);
    std::mt19937 random(static_cast<unsigned>(seed));
    const auto number = [&](int from, int to) {
        return std::uniform_int_distribution<int>(from, to)(random);
    };
    for (int round = 0; round < 300; ++round) {
        std::vector<CutOutWindow> windows(8);
        std::vector<bool> isClear;
        for (auto &window : windows) {
            window.area = {number(-2, size), number(-2, size), number(0, 8), number(0, 8)};
            isClear.push_back(number(0, 1) == 1);
        }
        const auto region = cutOuts(cutOutPieces(windows, isClear, {0, 0, size, size}));
        for (int pixel = 0; pixel < size * size; ++pixel) {
            const PixelRect spot = {pixel % size, pixel / size, 1, 1};
            const auto topmost = std::ranges::find_if(windows, [&](const CutOutWindow &window) {
                return !window.area.intersection(spot).isEmpty();
            });
            ASSERT_EQ(region.overlaps(spot),
                      topmost != windows.end() &&
                          isClear[static_cast<std::size_t>(topmost - windows.begin())])
                << spot.x << "," << spot.y << " in round " << round;
        }
    }
}

} // namespace
} // namespace lumo::drawing
