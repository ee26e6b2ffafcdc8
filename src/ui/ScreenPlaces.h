#pragma once

#include "platform/Screens.h"
#include "platform/StatusItem.h"

#include <QRect>
#include <QSize>
#include <vector>

namespace lumo {

// A screen as the toolkit has it: where it begins in pixels, which is also where it begins in the
// toolkit's own units, and how large it is in those units.
struct ToolkitScreen {
    QRect area;
    double pixelsPerUnit = 1;

    bool operator==(const ToolkitScreen &) const = default;
};

// A rectangle on one of the toolkit's screens, in the toolkit's units. The screen has whole units
// only.
struct ToolkitPlace {
    QRect area;
    QRect screen;
};

// Where the item is, or the pointer if that is all that is known, on the toolkit's screens. The
// screens are as the platform knows them, the main one first, and as the toolkit knows them, in no
// order that matters but its main one first; neither list is empty.
ToolkitPlace toolkitPlace(const StatusItemPlace &place, const std::vector<Screen> &screens,
                          const std::vector<ToolkitScreen> &toolkitScreens);

// Where a popover of this size goes: below the anchor, or above it where there is no room, in the
// middle of it as far as the screen allows, and always wholly on the screen if that is large
// enough.
QRect popoverArea(const ToolkitPlace &anchor, QSize size);

} // namespace lumo
