#include "platform/x11/server/EventRouter.h"

#include <cstring>
#include <numeric>

namespace lumo::x11 {

namespace {

constexpr std::uint8_t sentMark = 0x80; // in the response type

bool mayBeSent(std::uint8_t code) {
    return code == XCB_CLIENT_MESSAGE || code == XCB_EXPOSE || code == XCB_BUTTON_RELEASE;
}

} // namespace

EventRouter::EventRouter() {
    static_assert(std::accumulate(counts.begin(), counts.end(), std::size_t{0}) == slotCount);
    slotOfCode_.fill(noSlot);
    addExtension(EventSource::core, 0);
    slotOfCode_[XCB_GE_GENERIC] = noSlot;
}

void EventRouter::addExtension(EventSource source, std::uint8_t code) {
    if (source == EventSource::xinput) {
        xinputOpcode_ = code;
    } else if (source == EventSource::xkb) {
        xkbCode_ = code;
    } else {
        for (std::uint8_t number = 0; indexOf(source, number) != noSlot; ++number) {
            slotOfCode_.at(code + std::size_t{number}) = indexOf(source, number);
        }
    }
}

// The slot of a kind; none for one that there is no room for.
std::uint8_t EventRouter::indexOf(EventSource source, std::uint8_t number) {
    const auto *count = counts.begin() + static_cast<std::ptrdiff_t>(source);
    return number < *count ? std::accumulate(counts.begin(), count, number) : noSlot;
}

EventRouter::Slot &EventRouter::slotOf(EventSource source, std::uint8_t number) {
    return slots_.at(indexOf(source, number));
}

Handle EventRouter::subscribe(Slot &slot, std::uint8_t windowOffset, xcb_window_t window,
                              Events::Observer observer) {
    slot.windowOffset = windowOffset;
    std::erase_if(slot.ofWindow, [](const auto &entry) { return !entry.second.isObserved(); });
    return slot.ofWindow[window].subscribe(std::move(observer));
}

std::uint8_t EventRouter::indexOf(const xcb_generic_event_t &event) const {
    const auto code = static_cast<std::uint8_t>(event.response_type & ~sentMark);
    if (code != event.response_type && !mayBeSent(code)) {
        return noSlot;
    }
    // These two extensions have one event code for all their kinds.
    if (code == XCB_GE_GENERIC) {
        const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(event);
        return xinputOpcode_ != 0 && generic.extension == xinputOpcode_ && generic.event_type < 0xff
                   ? indexOf(EventSource::xinput, static_cast<std::uint8_t>(generic.event_type))
                   : noSlot;
    }
    if (xkbCode_ != 0 && code == xkbCode_) {
        return indexOf(EventSource::xkb, event.pad0);
    }
    return slotOfCode_.at(code);
}

void EventRouter::route(const xcb_generic_event_t &event) const {
    const auto index = indexOf(event);
    if (index == noSlot) {
        return;
    }
    const auto &slot = slots_.at(index);
    slot.all.emit(event);
    if (!slot.ofWindow.empty()) {
        xcb_window_t window = XCB_NONE;
        std::memcpy(&window, reinterpret_cast<const char *>(&event) + slot.windowOffset,
                    sizeof window);
        if (const auto found = slot.ofWindow.find(window); found != slot.ofWindow.end()) {
            found->second.emit(event);
        }
    }
}

} // namespace lumo::x11
