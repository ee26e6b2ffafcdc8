#pragma once

#include <string_view>

namespace lumo::x11 {

// The ways to get an overlay among the other windows, one class each.
enum class PlacementKind { below, managed, cutOuts };

// What is known of a window manager beforehand.
struct ManagerHabits {
    PlacementKind placement = PlacementKind::below;

    // A window that gets the focus comes above the other ordinary ones.
    bool focusRaises = true;

    bool operator==(const ManagerHabits &) const = default;
};

// By the name that the window manager gives itself, empty while none runs. An unknown one gets the
// placement that asks the least of it; whether that holds is seen at run time.
ManagerHabits habitsOf(std::string_view managerName);

} // namespace lumo::x11
