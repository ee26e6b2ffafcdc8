#pragma once

#include "platform/EventMonitors.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>

namespace lumo::wayland {

class Compositor;

// No compositor lets a program look at the input of others: global monitors receive at most how far
// the pointer goes to the left and right, without modifiers. Local ones receive the keys that the
// toolkit reports.
class WaylandEventMonitors final : public EventMonitors {
  public:
    // The compositor outlives the object.
    explicit WaylandEventMonitors(Compositor &compositor)
        : compositor_(compositor) {}

    Handle addGlobalMonitor(EventMask mask,
                            std::function<void(const InputEvent &)> handler) override;
    Handle addLocalMonitor(EventMask mask,
                           std::function<bool(const InputEvent &)> handler) override;

    // A key of this program's window is pressed; true when a monitor has swallowed that. The key is
    // an XKB key code, the modifiers are of modifierFlag.
    bool handleKeyPress(std::uint32_t keycode, std::uint32_t modifiers);

  private:
    // An event and, for those that come later, whether a monitor has swallowed it.
    struct LocalEvent {
        const InputEvent *event;
        bool *isSwallowed;
    };

    Compositor &compositor_;
    Signal<LocalEvent> local_;
};

} // namespace lumo::wayland
