#pragma once

#include "platform/Screens.h"
#include "support/Geometry.h"
#include "windows/WindowDescriptor.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lumo {

// The window server's bounds have the origin at the top left and y down ("Quartz"); screens and
// overlays have it at the bottom left and y up ("Cocoa"). All lengths are in points.

// The key of every per-display table: the screen's number, or 0 for a screen without one.
std::uint32_t displayID(const Screen &screen);

// The largest y that any screen reaches, the line from which window bounds are measured; 0 without
// screens. It is the highest edge of all, not that of the main screen.
double highestScreenEdge(const std::vector<Screen> &screens);

// A window server rectangle in the space of Screen::frame.
Rect convertQuartzToCocoa(const Rect &rect, double highestEdge);

// The part of a window that lies on a screen, with the origin at that screen's bottom left corner
// and y up. Null or empty when the window is not on the screen.
Rect displayLocalRect(const Rect &windowBounds, const Rect &screenFrame, double highestEdge);

// The strips of recent applications that Stage Manager keeps at the left and right edge of the
// screen, grown a little, in whole points, with the origin at the screen's bottom left corner and y
// up, in the order of the windows.
std::vector<Rect> stageManagerStrips(const Rect &screenFrame,
                                     const std::vector<WindowDescriptor> &allWindows,
                                     double highestEdge);

// Equal for equal lists: "none" for an empty one, else "x,y,width,height" of each rectangle,
// rounded to whole points, joined with "|". Fatal for a number that no integer holds.
std::string exclusionSignature(const std::vector<Rect> &rects);

} // namespace lumo
