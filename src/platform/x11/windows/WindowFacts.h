#pragma once

#include "platform/x11/windows/StackingLayer.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumo::x11 {

class Connection;

// Widths along the four edges of a window, in pixels.
struct Edges {
    int left = 0;
    int right = 0;
    int top = 0;
    int bottom = 0;

    bool operator==(const Edges &) const = default;
};

// What a window's properties say about it.
struct WindowFacts {
    enum class Type { normal, desktop, dock, floating };

    std::optional<std::string> netName = {}; // _NET_WM_NAME
    std::optional<std::string> name = {};    // WM_NAME
    std::string instanceName = {};           // WM_CLASS
    std::string className = {};
    std::int32_t statedProcess = 0;    // _NET_WM_PID, 0 when absent
    std::int32_t connectedProcess = 0; // of the window's connection, 0 when unknown
    std::optional<std::uint32_t> opacity = {};
    Type type = Type::normal;
    bool isAbove = false;
    bool isBelow = false;
    bool isHidden = false;
    bool skipsTaskbar = false;
    std::optional<std::uint32_t> managerState = {}; // WM_STATE: 0 withdrawn, 1 normal, 3 iconic
    std::optional<std::uint32_t> desktop = {};      // all bits set when on all desktops
    Edges shadows = {}; // _GTK_FRAME_EXTENTS: what it keeps free around itself for its own shadows

    // _NET_FRAME_EXTENTS: what the manager shows around it; absent when the manager does not say.
    std::optional<Edges> decorations = {};

    // WM_TRANSIENT_FOR; absent when there is none, the root window when it is one of a group.
    std::optional<xcb_window_t> transientFor = {};

    // A window manager has taken the window in hand, and may have died since.
    bool isManaged() const { return managerState.value_or(0) != 0; }

    std::optional<std::string> title() const;
    std::int32_t processIdentifier() const;
};

// Where a window belongs, by its facts and whether it has asked all window managers to leave it
// alone. Without a window manager those that would be managed are ordinary ones.
StackingLayer stackingLayerOf(const WindowFacts &facts, bool isLeftAlone);

// The window properties that make up the facts: which they are, how to ask for them and what the
// replies mean. Each has an index below count.
class WindowProperties {
  public:
    static constexpr unsigned count = 12;

    explicit WindowProperties(Connection &connection);

    // The index of a property; absent when it is none of these.
    std::optional<unsigned> indexOf(xcb_atom_t property) const;

    // The index of WM_STATE, which tells the windows that are managed from all others.
    static unsigned managerStateIndex();

    xcb_get_property_cookie_t request(xcb_window_t window, unsigned index) const;

    // Stores what the reply says; a null reply, or one of another type, is as good as no property.
    void apply(WindowFacts &facts, unsigned index, const xcb_get_property_reply_t *reply) const;

  private:
    WindowFacts::Type typeOf(const xcb_get_property_reply_t *reply) const;
    void applyState(WindowFacts &facts, const xcb_get_property_reply_t *reply) const;

    Connection &connection_;
    std::array<xcb_atom_t, count> atoms_{};
    std::vector<std::pair<xcb_atom_t, WindowFacts::Type>> types_;
    xcb_atom_t utf8String_;
    xcb_atom_t stateAbove_;
    xcb_atom_t stateStaysOnTop_;
    xcb_atom_t stateBelow_;
    xcb_atom_t stateHidden_;
    xcb_atom_t stateSkipTaskbar_;
};

} // namespace lumo::x11
