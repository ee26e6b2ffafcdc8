#include "DragAndResize.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace lumo::desktop {

namespace {

constexpr int way = 120;
constexpr int step = 12;

// The widest trail.
int stroke(const DraggingDesktop &desktop, EvdevButton button, int from, int direction) {
    desktop.moveTo({from, 200});
    desktop.setKey(EvdevKey::command, true);
    desktop.setButton(true, button);
    int widest = 0;
    for (int moved = step; moved <= way; moved += step) {
        desktop.moveTo({from + direction * moved, 200});
        if (moved == step) {
            desktop.afterFirstStep();
        }
        widest = std::max(widest, desktop.trail());
    }
    desktop.setButton(false, button);
    desktop.setKey(EvdevKey::command, false);
    return widest;
}

} // namespace

void dragAndResize(const DraggingDesktop &desktop, Area &window) {
    EXPECT_LE(stroke(desktop, EvdevButton::left, 200, 1), 2 * step) << "dragged";
    window.x += way;
    EXPECT_EQ(desktop.wrong(), "") << "dragged";
    EXPECT_LE(stroke(desktop, EvdevButton::right, 560, 1), 2 * step) << "made wider";
    window.width += way;
    EXPECT_EQ(desktop.wrong(), "") << "made wider";
    EXPECT_LE(stroke(desktop, EvdevButton::right, 680, -1), 2 * step) << "made narrower";
    window.width -= way;
    EXPECT_EQ(desktop.wrong(), "") << "made narrower";
}

} // namespace lumo::desktop
