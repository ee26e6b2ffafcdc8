#pragma once

#include "desktop/Picture.h"
#include "wayland/WaylandHands.h"

#include <functional>
#include <string>

namespace lumo::desktop {

// What the story below needs of a compositor and of the window in front.
struct DraggingDesktop {
    std::function<void(Spot)> moveTo;
    std::function<void(EvdevKey, bool isDown)> setKey;
    std::function<void(bool isDown, EvdevButton)> setButton;
    std::function<int()> trail;         // of the window's cut-out, in pixels
    std::function<std::string()> wrong; // in the picture at rest; empty when nothing is
    std::function<void()> afterFirstStep = [] {};
};

// Drags the window, of 420 x 300 points at 60, 80, makes it wider and narrower, and keeps its area
// up to date. Its cut-out follows by a step or two of the pointer: a strip is covered meanwhile, or
// clear that should not be.
void dragAndResize(const DraggingDesktop &desktop, Area &window);

} // namespace lumo::desktop
