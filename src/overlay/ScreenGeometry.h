#pragma once

#include "platform/Screens.h"
#include "support/Geometry.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lumo {

// The window server's bounds have the origin at the top left and y down; screens and overlays have
// it at the bottom left and y up. All lengths are in points.

// What identifies a display: the screen's number, or 0 for a screen without one.
std::uint32_t displayID(const Screen &screen);

// The largest y that any screen reaches, the line from which window bounds are measured; 0 without
// screens. It is the highest edge of all, not that of the main screen.
double highestScreenEdge(const std::vector<Screen> &screens);

// A window server rectangle in the space of Screen::frame.
Rect screenRect(const Rect &rect, double highestEdge);

// The part of a window that lies on a screen, with the origin at that screen's bottom left corner
// and y up. Null or empty when the window is not on the screen.
Rect displayLocalRect(const Rect &windowBounds, const Rect &screenFrame, double highestEdge);

// Which of these windows are strips of recent applications at the left or right edge of the screen:
// grown a little, in whole points, with the origin at the screen's bottom left corner and y up, in
// the order of the windows.
std::vector<Rect> stripsOnScreen(const Rect &screenFrame, const std::vector<Rect> &windowBounds,
                                 double highestEdge);

// Equal for equal lists: "none" for an empty one, else "x,y,width,height" of each rectangle,
// rounded to whole points, joined with "|". Fatal for a number that no integer holds.
std::string exclusionSignature(const std::vector<Rect> &rects);

} // namespace lumo
