#pragma once

#include "platform/x11/server/CompositorSelection.h"
#include "platform/x11/server/PendingReads.h"
#include "platform/x11/server/PropertyReply.h"
#include "platform/x11/windows/Management.h"
#include "support/Handle.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace lumo::x11 {

class Connection;
struct MirrorChange;

// What the root window's properties say: the window manager, the active window, the current
// desktop. Its owner has it ask for what has changed at the end of each batch of events.
class RootState {
  public:
    using Note = std::function<void(bool MirrorChange::*)>;

    // Calls the function for each change from then on. The root window's property events must have
    // been selected.
    RootState(Connection &connection, Note note);

    // Asks the server for what events have said is different.
    void requestReads();

    // True when nothing is being read.
    bool isSettled() const;

    // Whether the window manager says which window is the active one.
    bool namesActiveWindow() const;

    std::optional<xcb_window_t> activeWindow() const;

    // Absent when the window manager does not say.
    std::optional<std::uint32_t> currentDesktop() const { return currentDesktop_; }

    // Empty when no window manager runs or it has no name.
    const std::string &windowManagerName() const { return managerName_; }

    Management management() const;

    // Whether the window manager says that it understands the hint.
    bool supports(xcb_atom_t hint) const;

    // The managed windows, as the window manager says.
    const std::vector<xcb_window_t> &clients() const { return clients_; }

  private:
    bool isWindowManagerRunning() const { return managerWindow_ != XCB_NONE; }
    void handleProperty(xcb_atom_t property);
    void apply(unsigned index, const xcb_get_property_reply_t *reply);
    void applyManagerCandidate(xcb_window_t candidate);
    void readManager();
    void requestCompositor();
    void setManager(xcb_window_t window, const std::string &name);

    Connection &connection_;
    Note note_;
    std::vector<xcb_atom_t> atoms_;
    xcb_atom_t utf8String_;
    xcb_atom_t managerNameAtom_;
    PendingReads reads_;
    ReplyQueue replies_;

    // The window that stands for the manager: as the root's property says, and once that window
    // has confirmed it.
    xcb_window_t managerCandidate_ = XCB_NONE;
    xcb_window_t managerWindow_ = XCB_NONE;
    std::string managerName_;
    xcb_window_t compositor_ = XCB_NONE; // the owner of the compositing managers' selection
    std::vector<xcb_atom_t> supported_;  // sorted
    std::vector<xcb_window_t> clients_;
    std::optional<xcb_window_t> activeWindow_;
    std::optional<std::uint32_t> currentDesktop_;

    Handle rootEvents_;
    CompositorSelection compositorSelection_;
    std::array<Handle, 2> candidateEvents_;
};

} // namespace lumo::x11
