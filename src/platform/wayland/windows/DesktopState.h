#pragma once

#include "drawing/PixelRect.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lumo::wayland {

// A window of some application. Areas are in points of the compositor's space, see Output.
struct DesktopWindow {
    enum class Presence {
        shown,     // where no other window covers it
        elsewhere, // on a space that is not shown, or behind others in a group with tabs
        minimized,
    };
    enum class Layer { below, ordinary, above, dock };

    std::uint32_t identifier = 0;
    std::string application = {}; // app_id, or the class of a window that Xwayland shows
    std::optional<std::string> title = {};
    std::int32_t process = 0;
    drawing::PixelRect frame = {}; // with its title bar and border
    Presence presence = Presence::shown;
    Layer layer = Layer::ordinary;
    bool isFocused = false;
    bool isFullScreen = false;
    bool isMovable = false; // by hand, anywhere
    bool isInTaskbars = true;
    bool isXwayland = false;                        // an X application's, where the source tells
    std::optional<std::uint32_t> transientFor = {}; // the window whose dialog it is

    bool operator==(const DesktopWindow &) const = default;
};

// The desktop at one moment, as a source of windows knows it.
struct DesktopState {
    std::vector<DesktopWindow> windows; // from the bottom to the top

    // Of menus and other windows that no manager handles: above all windows, but beneath overlays.
    std::vector<drawing::PixelRect> unmanagedAreas;

    // Of each display, by the output's name, what panels leave free; a display that is missing has
    // none.
    std::map<std::string, drawing::PixelRect> usableAreas;

    // They leave out the gaps around windows as well, see withoutGaps().
    bool areUsableAreasInGaps = false;

    // Which spaces are shown, in any words that differ when others are.
    std::string shownSpaces;

    bool operator==(const DesktopState &) const = default;

    const DesktopWindow *find(std::uint32_t identifier) const;
    const DesktopWindow *focused() const; // null when none is
};

// Which parts of a display are taken by panels.
std::vector<drawing::PixelRect> panelAreas(const drawing::PixelRect &display,
                                           const drawing::PixelRect &usable);

// The part of a display that panels leave free, from how large that is and an area that lies within
// it with gaps around: at each side of the display the panels have what the sizes differ by, where
// the gap is the wider one.
drawing::PixelRect withoutGaps(const drawing::PixelRect &display,
                               const drawing::PixelRect &usableInGaps, int width, int height);

// Where a popover of that size belongs whose item is in a panel of the display: in the right corner
// at the panel, which is at the bottom, else at the top.
drawing::PixelRect popoverArea(const drawing::PixelRect &display, const drawing::PixelRect &usable,
                               int width, int height);

} // namespace lumo::wayland
