#include "platform/macos/logic/LocalMonitors.h"

#include <utility>

namespace lumo::macos {

Handle LocalMonitors::add(EventMask mask, std::function<bool(const InputEvent &)> handler) {
    return monitors_.subscribe([mask, handler = std::move(handler)](const Offer &offer) {
        if (!*offer.isSwallowed && (mask & eventMask(offer.event->type)) != 0) {
            *offer.isSwallowed = handler(*offer.event);
        }
    });
}

bool LocalMonitors::send(const InputEvent &event, bool isRepeat) {
    if (isRepeat) {
        return event.keyCode == swallowedKey_;
    }
    bool isSwallowed = false;
    monitors_.emit({&event, &isSwallowed});
    if (event.type == EventType::keyDown) {
        swallowedKey_ = isSwallowed ? std::optional(event.keyCode) : std::nullopt;
    }
    return isSwallowed;
}

} // namespace lumo::macos
