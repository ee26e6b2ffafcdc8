#pragma once

#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace lumo::x11 {

// What defines an event: the core protocol or an extension.
enum class EventSource : std::uint8_t { core, damage, randr, shape, xfixes, xinput, xkb };

// One kind of event with the structure that libxcb delivers it in. EventKinds.h has them all.
template <class Event>
struct EventKind {
    EventSource source = EventSource::core;
    std::uint8_t number = 0;       // within the source
    std::uint8_t windowOffset = 0; // in bytes, of the window it is about; 0: it is about none
};

// Delivers events to the handlers that subscribed to their kind, or to their kind and window. It
// selects no events on the server. Routing looks up the kind in a table and the window in a map,
// and allocates nothing. Main thread only.
//
// Any client can send any event to a window of ours, or to all clients that select the root
// window's. Such an event is marked as sent and is dropped here, since it says nothing about the
// server's state. Exceptions are client messages, which are always sent, and two with which panels
// have the icons that they embed redraw and react to clicks: Expose and ButtonRelease.
class EventRouter {
  public:
    EventRouter();

    // Has the events of an extension delivered from now on: those from this event code on, or for
    // the input extension those with this major opcode.
    void addExtension(EventSource source, std::uint8_t code);

    // Calls the handler for each event of this kind, with the event and if the handler takes it,
    // the full sequence number of the last request that the server had handled before. Never when
    // the server lacks the extension.
    template <class Event, class Handler>
    Handle on(const EventKind<Event> &kind, Handler handler) {
        return slotOf(kind.source, kind.number).all.subscribe(adapt<Event>(std::move(handler)));
    }

    // As above, for events about this window alone.
    template <class Event, class Handler>
    Handle on(const EventKind<Event> &kind, xcb_window_t window, Handler handler) {
        return subscribe(slotOf(kind.source, kind.number), kind.windowOffset, window,
                         adapt<Event>(std::move(handler)));
    }

    // Calls the handlers of the event: first those for any window, then those for its own.
    void route(const xcb_generic_event_t &event) const;

  private:
    using Events = Signal<xcb_generic_event_t>;

    struct Slot {
        Events all;
        std::unordered_map<xcb_window_t, Events> ofWindow;
        std::uint8_t windowOffset = 0;
    };

    // How many kinds there is room for, by source.
    static constexpr std::array<std::uint8_t, 7> counts = {XCB_GE_GENERIC + 1, 1, 2, 1, 2, 32, 16};
    static constexpr std::size_t slotCount = 90;
    static constexpr std::uint8_t noSlot = 0xff;

    template <class Event, class Handler>
    static Events::Observer adapt(Handler handler) {
        return [handler = std::move(handler)](const xcb_generic_event_t &generic) {
            const auto &event = reinterpret_cast<const Event &>(generic);
            if constexpr (std::is_invocable_v<const Handler &, const Event &, std::uint32_t>) {
                handler(event, generic.full_sequence);
            } else {
                handler(event);
            }
        };
    }

    static std::uint8_t indexOf(EventSource source, std::uint8_t number);
    std::uint8_t indexOf(const xcb_generic_event_t &event) const;
    Slot &slotOf(EventSource source, std::uint8_t number);
    static Handle subscribe(Slot &slot, std::uint8_t windowOffset, xcb_window_t window,
                            Events::Observer observer);

    std::array<Slot, slotCount> slots_;
    std::array<std::uint8_t, 128> slotOfCode_{}; // noSlot where a code has none, or several
    std::uint8_t xinputOpcode_ = 0;              // 0 where there is no such extension
    std::uint8_t xkbCode_ = 0;
};

} // namespace lumo::x11
