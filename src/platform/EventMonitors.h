#pragma once

#include "support/Handle.h"

#include <cstdint>
#include <functional>

namespace lumo {

// The kinds of events that can be monitored; a mask has the bit 1 << type of each kind.
enum class EventType : std::uint8_t {
    mouseMoved = 5,
    leftMouseDragged = 6,
    rightMouseDragged = 7,
    keyDown = 10,
    flagsChanged = 12, // of a modifier key
    otherMouseDragged = 27,
};

using EventMask = std::uint64_t;

constexpr EventMask eventMask(EventType type) {
    return EventMask{1} << static_cast<unsigned>(type);
}

// The pointer moved, with or without a button down.
inline constexpr EventMask pointerMotionMask =
    eventMask(EventType::mouseMoved) | eventMask(EventType::leftMouseDragged) |
    eventMask(EventType::rightMouseDragged) | eventMask(EventType::otherMouseDragged);

// The bits of an event's modifier flags.
namespace modifierFlag {
inline constexpr std::uint32_t capsLock = 1U << 16U;
inline constexpr std::uint32_t shift = 1U << 17U;
inline constexpr std::uint32_t control = 1U << 18U;
inline constexpr std::uint32_t option = 1U << 19U;
inline constexpr std::uint32_t command = 1U << 20U;
// All bits that do not depend on the device.
inline constexpr std::uint32_t deviceIndependent = 0xFFFF0000U;
} // namespace modifierFlag

struct InputEvent {
    EventType type = EventType::mouseMoved;
    std::uint32_t modifierFlags = 0;
    double deltaX = 0;         // of pointer events: points, positive to the right
    double deltaY = 0;         // of pointer events: points, positive downwards
    std::uint16_t keyCode = 0; // of key events: the virtual key code on the ANSI layout
};

// Looks at pointer and key events as they happen, whichever program they are for. Main thread only.
// A monitor may be added and released from within any handler; a released one is not called any
// more. A key that is held is one press, whose auto-repeats no monitor receives.
class EventMonitors {
  public:
    virtual ~EventMonitors() = default;

    // Calls the handler for every event of these kinds that goes to another program. Such events
    // can only be looked at.
    virtual Handle addGlobalMonitor(EventMask mask,
                                    std::function<void(const InputEvent &)> handler) = 0;

    // Calls the handler for every event of these kinds that goes to this program, before it gets
    // there. The handler returns true to swallow the event: no other handler and no window receives
    // it then. Monitors receive an event in the order in which they were added.
    virtual Handle addLocalMonitor(EventMask mask,
                                   std::function<bool(const InputEvent &)> handler) = 0;
};

} // namespace lumo
