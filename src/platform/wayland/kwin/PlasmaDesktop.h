#pragma once

#include "drawing/PixelRect.h"
#include "platform/wayland/windows/DesktopState.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lumo::wayland::kwin {

// A window as the protocol for Plasma's own programs describes it.
struct PlasmaWindow {
    std::string application = {}; // app_id, or the class of a window that Xwayland shows
    std::string title = {};
    std::int32_t process = 0;
    drawing::PixelRect frame = {};
    std::uint32_t state = 0;                  // bits of org_kde_plasma_window_management.state
    std::set<std::string> desktops = {};      // by their identifiers; on all of them when empty
    std::optional<std::uint32_t> parent = {}; // of a dialog
    bool isComplete = false;                  // all about it has arrived
};

// What the protocol leaves out, and desktopScript tells.
struct DesktopFacts {
    struct Dock {
        drawing::PixelRect frame;
        std::int32_t process = 0;

        bool operator==(const Dock &) const = default;
    };

    // A window that belongs to other activities than the current one.
    struct Absentee {
        std::int32_t process = 0;
        std::string title = {};

        bool operator==(const Absentee &) const = default;
    };

    std::vector<Dock> docks = {};
    std::string activity = {}; // empty when there are none
    std::vector<Absentee> absentees = {};

    bool operator==(const DesktopFacts &) const = default;
};

// All that KWin has said about the desktop.
struct PlasmaDesktop {
    std::map<std::uint32_t, PlasmaWindow> windows; // by KWin's own numbers
    std::vector<std::uint32_t> stacking;           // the same numbers from the bottom to the top
    std::set<std::string> currentDesktops;
    bool showsDesktop = false; // instead of the windows, which the user has asked for
    DesktopFacts facts;
};

// The windows in the order of the stacking list, then the docks. A window that the list does not
// have yet is the topmost: KWin tells of a new one before it tells of its place.
DesktopState stateOf(const PlasmaDesktop &desktop);

// What the script's message says, in JSON; absent when it says nothing of the kind.
std::optional<DesktopFacts> factsOf(std::string_view message);

} // namespace lumo::wayland::kwin
