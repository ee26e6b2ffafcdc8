#pragma once

#include "platform/x11/input/InputRouter.h"
#include "platform/x11/input/KeyboardModifiers.h"
#include "platform/x11/input/OwnInput.h"
#include "platform/x11/input/X11EventMonitors.h"
#include "platform/x11/input/X11HotKeys.h"
#include "platform/x11/input/X11Keyboard.h"
#include "support/Handle.h"

#include <xcb/xcb.h>

#include <array>
#include <functional>
#include <optional>

namespace lumo {
class Log;
} // namespace lumo

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::x11 {

class Connection;
class EventRouter;
class WindowMirror;
class X11Screens;

// Everything that has to do with what the user types and points at: takes the server's events, has
// the router decide who receives each, and hands it over. Main thread only; making it waits for the
// server.
class X11Input {
  public:
    // The arguments must outlive the object. The function tells whether the active window is this
    // program's.
    X11Input(Connection &connection, WindowMirror &mirror, const X11Screens &screens,
             std::function<bool()> isActive, freedesktop::GlibMainLoop &mainLoop, const Log &log);

    const KeyboardModifiers &modifiers() const { return modifiers_; }
    X11Keyboard &keyboard() { return keyboard_; }
    X11EventMonitors &eventMonitors() { return monitors_; }
    const X11EventMonitors &eventMonitors() const { return monitors_; }
    X11HotKeys &hotKeys() { return hotKeys_; }

    // For the toolkit, which has this program's windows on a connection of its own: is to be called
    // with each event that it reads there, before it looks at it. True when the event is to be
    // dropped: a monitor swallowed it, or it belongs to a hot key, which arrives there while one of
    // those windows has grabbed the keyboard.
    bool handleToolkitEvent(const xcb_generic_event_t &event);

  private:
    std::array<Handle, 4> subscribe(EventRouter &events);
    void handleRawPress(const xcb_input_raw_key_press_event_t &event);
    bool handlePress(KeySource source, const xcb_key_press_event_t &event);
    void handleRelease(KeySource source, const xcb_key_release_event_t &event);
    InputFocus focus() const;

    std::function<bool()> isActive_;
    KeyboardModifiers modifiers_;
    X11Keyboard keyboard_;
    std::optional<OwnInput> ownInput_; // absent without the input extension
    X11EventMonitors monitors_;
    X11HotKeys hotKeys_;
    InputRouter router_;
    std::array<Handle, 4> events_;
};

} // namespace lumo::x11
