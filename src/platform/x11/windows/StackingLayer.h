#pragma once

namespace lumo::x11 {

// What a top-level window is for, as far as ordering goes.
enum class StackingLayer {
    desktop,  // the desktop itself, under everything and in no list
    below,    // kept below by the user
    normal,   // ordinary windows
    above,    // docks and windows that are kept on top
    floating, // menus, tool tips, notifications and other windows that no manager handles
};

} // namespace lumo::x11
