#pragma once

#include "platform/EventMonitors.h"
#include "platform/x11/input/OwnInput.h"
#include "platform/x11/input/PointerDevices.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

namespace lumo::x11 {

class Connection;
class KeyboardModifiers;
class WindowMirror;
class X11Screens;

// Global monitors by the raw events of the input extension, which come whoever has the focus and
// also while another program grabs the devices; the modifier keys by the keyboard extension's
// account of them. An event costs the same whatever goes on, allocates nothing and asks the server
// nothing, and motion is asked for only while somebody wants it.
//
// Warping the pointer is no motion, and a key that repeats is one press. A server without these
// extensions lets nothing be monitored globally.
//
// Local monitors hear of key presses only, and only what the toolkit hands over, see handleLocal().
class X11EventMonitors final : public EventMonitors {
  public:
    // All arguments must outlive the monitors and their handles.
    X11EventMonitors(Connection &connection, const KeyboardModifiers &modifiers,
                     WindowMirror &mirror, const X11Screens &screens);

    // Whether global monitors hear of key presses, with their modifiers.
    bool hearsKeys() const;

    Handle addGlobalMonitor(EventMask mask,
                            std::function<void(const InputEvent &)> handler) override;
    // Calls the observer when a mouse button goes down or up, whoever the event is for; the wheels
    // count. An empty handle on a server that does not tell.
    Handle addButtonMonitor(std::function<void(std::uint32_t button, bool isDown)> observer);

    Handle addLocalMonitor(EventMask mask,
                           std::function<bool(const InputEvent &)> handler) override;

    // For the toolkit that has this program's windows on a connection of its own: is to be called
    // with each event that it reads there, before it looks at it. True when a monitor swallowed the
    // event, which is then to be dropped.
    bool handleLocal(const xcb_generic_event_t &event) const;

  private:
    struct LocalEvent {
        const InputEvent *event;
        bool *isSwallowed;
    };

    void selectEvents();
    void watchKeyboardState();
    void handle(const xcb_generic_event_t &event);
    void handleRaw(const xcb_ge_generic_event_t &event);
    void handleRawKey(std::uint32_t keycode);
    void handleRawMotion(const xcb_input_raw_motion_event_t &event);
    void handleKeyboardState(std::uint8_t state, std::uint8_t keycode);
    EventType motionType() const;

    Connection &connection_;
    const KeyboardModifiers &modifiers_;
    const X11Screens &screens_;
    std::optional<PointerDevices> devices_; // both absent without the input extension
    std::optional<OwnInput> ownInput_;
    std::uint8_t keyboardState_ = 0; // the modifiers in force
    std::uint32_t buttonsDown_ = 0;  // bit 1 << number; of those that motion may be a drag of
    std::uint32_t selected_ = 0;     // raw events
    std::array<int, 32> wanted_{};   // global monitors of each type
    int wantedButtons_ = 0;          // button monitors
    Signal<InputEvent> global_;
    Signal<std::uint32_t, bool> buttons_;
    Signal<LocalEvent> local_;
    Handle events_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
