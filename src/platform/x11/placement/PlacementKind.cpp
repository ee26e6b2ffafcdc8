#include "platform/x11/placement/PlacementKind.h"

#include <algorithm>
#include <array>

namespace lumo::x11 {

namespace {

struct Entry {
    std::string_view name; // or how it begins: some add a version
    ManagerHabits habits;
};

constexpr ManagerHabits below = {PlacementKind::below, true};
constexpr ManagerHabits managed = {PlacementKind::managed, true};
constexpr ManagerHabits holes = {PlacementKind::holes, true};
constexpr ManagerHabits holesWithoutRaising = {PlacementKind::holes, false};

// clang-format off
constexpr auto entries = std::to_array<Entry>({
    {"Openbox", below},              // lets windows that it does not manage lie among its own
    {"Fluxbox", below},              // the same
    {"Xfwm4", below},                // the same, its compositor on or off
    {"IceWM", below},                // the same
    {"KWin", managed},               // draws what it does not manage above all it does, wherever it lies
    {"Mutter", holes},               // raises what it does not manage at once, each time
    {"GNOME Shell", holes},          // is Mutter
    {"Metacity", holes},             // the ancestor of Mutter, and keeps its order the same way
    {"Marco", holes},                // descends from Metacity
    {"Muffin", holes},               // descends from Mutter
    {"Compiz", holes},               // draws what it does not manage above all it does
    {"i3", holesWithoutRaising},     // tiles, and focusing leaves the order as it is
    {"awesome", holesWithoutRaising}, // tiles, and the pointer focuses without raising
    {"bspwm", holesWithoutRaising},  // tiles
    {"qtile", holesWithoutRaising},  // tiles
    {"herbstluftwm", holesWithoutRaising}, // tiles
    {"xmonad", holesWithoutRaising}, // tiles
    {"dwm", holesWithoutRaising},    // tiles
});
// clang-format on

} // namespace

ManagerHabits habitsOf(std::string_view managerName) {
    if (managerName.empty()) {
        return holes; // nobody raises a window but its own program
    }
    const auto known = std::ranges::find_if(
        entries, [&](const Entry &entry) { return managerName.starts_with(entry.name); });
    return known == entries.end() ? below : known->habits;
}

} // namespace lumo::x11
