#include "platform/wayland/WaylandEventMonitors.h"

#include "platform/freedesktop/KeyPositions.h"

#include <utility>

namespace lumo::wayland {

Handle WaylandEventMonitors::addGlobalMonitor(EventMask /*mask*/,
                                              std::function<void(const InputEvent &)> /*handler*/) {
    return {};
}

Handle WaylandEventMonitors::addLocalMonitor(EventMask mask,
                                             std::function<bool(const InputEvent &)> handler) {
    return local_.subscribe([mask, handler = std::move(handler)](const LocalEvent &local) {
        if (!*local.isSwallowed && (mask & eventMask(local.event->type)) != 0) {
            *local.isSwallowed = handler(*local.event);
        }
    });
}

bool WaylandEventMonitors::handleKeyPress(std::uint32_t keycode, std::uint32_t modifiers) {
    const auto key = freedesktop::virtualKeyOfKeycode(keycode);
    if (!key) {
        return false;
    }
    const InputEvent event{.type = EventType::keyDown, .modifierFlags = modifiers, .keyCode = *key};
    bool isSwallowed = false;
    local_.emit({&event, &isSwallowed});
    return isSwallowed;
}

} // namespace lumo::wayland
