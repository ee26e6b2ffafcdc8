#pragma once

#include "platform/EventMonitors.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace lumo::macos {

// The local monitors, which the system knows as a single one: it does not say in which order it
// calls several. Main thread only.
class LocalMonitors {
  public:
    // As EventMonitors::addLocalMonitor().
    Handle add(EventMask mask, std::function<bool(const InputEvent &)> handler);

    // Hands an event on to the monitors; true when it goes no further. An auto-repeat of a key goes
    // where the key's press went, and no monitor receives it.
    bool send(const InputEvent &event, bool isRepeat);

  private:
    struct Offer {
        const InputEvent *event;
        bool *isSwallowed;
    };

    Signal<Offer> monitors_;
    std::optional<std::uint16_t> swallowedKey_; // while it was the last key to be pressed
};

} // namespace lumo::macos
