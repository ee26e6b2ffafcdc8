#pragma once

#include "platform/EventMonitors.h"
#include "platform/x11/input/MotionReader.h"
#include "platform/x11/input/PointerDevices.h"
#include "platform/x11/server/XcbXkb.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <xcb/xinput.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

namespace lumo::x11 {

class Connection;
class EventRouter;
class KeyboardModifiers;
class X11Screens;

// The monitors, and what the server is asked for on their behalf; X11Input hands the events over
// and has them sent to those who are to receive them.
//
// Global monitors work by the raw events of the input extension, which come whichever client has
// the focus and also while one grabs the devices; the modifier keys by the state events of the
// keyboard extension. Translating an event allocates nothing and makes no request. Motion is
// selected only while it is wanted, and what came since the last reading is one event.
//
// Warping the pointer is no motion. A server without these extensions lets nothing be monitored
// globally; without the keyboard extension alone, motion has the modifiers of the reading before.
// Local monitors receive key presses only.
class X11EventMonitors final : public EventMonitors {
  public:
    // Calls the function for motion, which sendToGlobal() hands on. The arguments must outlive the
    // monitors and their handles.
    X11EventMonitors(freedesktop::GlibMainLoop &loop, Connection &connection,
                     const KeyboardModifiers &modifiers, const X11Screens &screens,
                     std::function<void(const InputEvent &)> moved);

    // Whether global monitors receive key presses, with their modifiers.
    bool canMonitorKeys() const;

    Handle addGlobalMonitor(EventMask mask,
                            std::function<void(const InputEvent &)> handler) override;
    // Calls the observer when a mouse button goes down or up, whichever client receives the event;
    // the wheels count. An empty handle on a server that does not tell.
    Handle addButtonMonitor(std::function<void(std::uint32_t button, bool isDown)> observer);

    Handle addLocalMonitor(EventMask mask,
                           std::function<bool(const InputEvent &)> handler) override;

    // What monitors receive of an event of the server; absent where that is nothing. Each event is
    // to be translated once, also when it is sent to nobody.
    std::optional<InputEvent> keyDown(const xcb_input_raw_key_press_event_t &event) const;
    std::optional<InputEvent> keyDown(const xcb_key_press_event_t &event) const;
    std::optional<InputEvent> modifierChange(const xcb_xkb_state_notify_event_t &event);

    // Hands on what motion has come, before the next reading is due.
    void readMotion();

    void sendToGlobal(const InputEvent &event) const { global_.emit(event); }
    bool sendToLocal(const InputEvent &event) const; // true when a monitor swallowed the event

  private:
    struct LocalEvent {
        const InputEvent *event;
        bool *isSwallowed;
    };

    std::array<Handle, 4> subscribe(EventRouter &events); // to what monitors do not receive
    void selectEvents();
    void watchKeyboardState();
    void finishMotion();
    void readKeyboardState();
    EventType motionType() const;

    Connection &connection_;
    const KeyboardModifiers &modifiers_;
    const X11Screens &screens_;
    std::function<void(const InputEvent &)> moved_;
    std::optional<PointerDevices> devices_; // absent without the input extension
    std::optional<MotionReader> motion_;    // likewise
    PointerMovement movement_;              // of this reading
    std::uint8_t keyboardState_ = 0;        // the modifiers in force
    std::uint32_t buttonsDown_ = 0; // bit 1 << number; of those that motion may be a drag of
    std::uint32_t selected_ = 0;    // raw events, motion aside
    bool hasMotion_ = false;        // is selected
    std::array<int, 32> wanted_{};  // global monitors of each type
    int wantedButtons_ = 0;         // button monitors
    Signal<InputEvent> global_;
    Signal<std::uint32_t, bool> buttons_;
    Signal<LocalEvent> local_;
    std::array<Handle, 4> events_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
