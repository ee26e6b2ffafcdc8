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
constexpr ManagerHabits cutOuts = {PlacementKind::cutOuts, true};
constexpr ManagerHabits cutOutsWithoutRaising = {PlacementKind::cutOuts, false};

// clang-format off
constexpr auto entries = std::to_array<Entry>({
    {"Openbox", below},              // lets override-redirect windows lie among its own
    {"Fluxbox", below},              // the same
    {"Xfwm4", below},                // the same, its compositor on or off
    {"IceWM", below},                // the same
    {"KWin", managed},               // draws override-redirect windows above all managed ones, wherever they lie
    {"Mutter", cutOuts},               // raises override-redirect windows at once, each time
    {"GNOME Shell", cutOuts},          // is Mutter
    {"Metacity", cutOuts},             // the ancestor of Mutter, and keeps its order the same way
    {"Marco", cutOuts},                // descends from Metacity
    {"Muffin", cutOuts},               // descends from Mutter
    {"Compiz", cutOuts},               // draws override-redirect windows above all managed ones
    {"i3", cutOutsWithoutRaising},     // tiles, and focusing leaves the order as it is
    {"awesome", cutOutsWithoutRaising}, // tiles, and the pointer focuses without raising
    {"bspwm", cutOutsWithoutRaising},  // tiles
    {"qtile", cutOutsWithoutRaising},  // tiles
    {"herbstluftwm", cutOutsWithoutRaising}, // tiles
    {"xmonad", cutOutsWithoutRaising}, // tiles
    {"dwm", cutOutsWithoutRaising},    // tiles
});
// clang-format on

} // namespace

ManagerHabits habitsOf(std::string_view managerName) {
    if (managerName.empty()) {
        return cutOuts; // only its own program raises a window
    }
    const auto known = std::ranges::find_if(
        entries, [&](const Entry &entry) { return managerName.starts_with(entry.name); });
    return known == entries.end() ? below : known->habits;
}

} // namespace lumo::x11
