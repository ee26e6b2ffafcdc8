#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/windows/Management.h"
#include "platform/x11/windows/StackingLayer.h"
#include "platform/x11/windows/WindowFacts.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>

namespace lumo::x11 {

// One child of the root window, with what is known of the managed window in it. Positions are in
// pixels from the root window's top left.
struct MirrorWindow {
    enum class Minimization {
        none,
        likely,  // or rolled up, so that its title bar alone is left
        certain, // though some window managers leave such a window mapped
    };

    xcb_window_t frame = XCB_NONE;    // the child of the root window
    xcb_window_t client = XCB_NONE;   // the managed window inside, or the frame itself
    drawing::PixelRect geometry = {}; // of the frame, its border included
    int borderWidth = 0;              // of the frame, in pixels on each side
    bool isMapped = false;
    bool isInputOnly = false;
    bool isOverrideRedirect = false; // of the frame
    bool isDescribed = false; // all that is below has been read; false for an instant at first
    bool isManaged = false;   // a window manager handles the client
    bool isInTaskbars = false;
    bool isOwn = false; // made on this connection, or a frame around an overlay
    Minimization minimization = Minimization::none;
    WindowFacts::Type type = WindowFacts::Type::normal;
    StackingLayer stackingLayer = StackingLayer::normal;
    Edges invisibleEdges = {};     // parts of the frame that show nothing; below 0 beyond the frame
    std::uint64_t shapeSerial = 0; // 0 while it is a rectangle, else another one after each change
    std::optional<xcb_window_t> transientFor = {}; // as WindowFacts::transientFor
    std::uint8_t depth = 0;
    xcb_visualid_t visual = XCB_NONE;
    double opacity = 1;
    std::int32_t processIdentifier = 0; // below 0, another for each client, when unknown
    std::string instanceName = {};      // the two parts of WM_CLASS
    std::string className = {};
    std::optional<std::string> title = {};
    std::optional<std::uint32_t> desktop = {}; // all bits set when on all desktops

    // What the user sees of the window, as far as a rectangle can tell.
    drawing::PixelRect visibleArea() const;

    bool isMinimized() const { return minimization != Minimization::none; }

    // This program's, and no overlay.
    bool isOfThisProgram() const;

    // Mapped with pixels, and another client's.
    bool canBeSeen() const {
        return isMapped && !isInputOnly && !isOwn && minimization != Minimization::certain;
    }

    bool operator==(const MirrorWindow &) const = default;
};

// What a window is described from, beside what its structure says.
struct DescriptionSources {
    xcb_window_t client = XCB_NONE;
    const WindowFacts &frameFacts;
    const WindowFacts &clientFacts;                       // the same when the client is the frame
    std::optional<drawing::PixelRect> clientInFrame = {}; // from inside the frame's border
    std::int32_t processIdentifier = 0;
    bool isComplete = true; // nothing is still to be read
    bool isOwn = false;
    Management management = Management::plain;
};

// The window as its structure stands, with everything else taken from the sources.
MirrorWindow describe(const MirrorWindow &window, const DescriptionSources &sources);

} // namespace lumo::x11
