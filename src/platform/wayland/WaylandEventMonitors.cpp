#include "platform/wayland/WaylandEventMonitors.h"

#include "platform/freedesktop/KeyPositions.h"
#include "platform/wayland/windows/Compositor.h"

#include <utility>

namespace lumo::wayland {

Handle WaylandEventMonitors::addGlobalMonitor(EventMask mask,
                                              std::function<void(const InputEvent &)> handler) {
    if ((mask & eventMask(EventType::mouseMoved)) == 0) {
        return {};
    }
    return compositor_.onPointerStroke([handler = std::move(handler)](double deltaX) {
        handler({.type = EventType::mouseMoved, .deltaX = deltaX});
    });
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
