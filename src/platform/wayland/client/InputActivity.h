#pragma once

#include "platform/wayland/client/ProtocolPointers.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>

namespace lumo::wayland {

class Connection;

// Whether the user has moved the pointer or pressed a key a moment ago. Main thread only.
class InputActivity {
  public:
    // Reads the connection's first seat.
    explicit InputActivity(const Connection &connection);
    ~InputActivity();
    InputActivity(const InputActivity &) = delete;
    InputActivity &operator=(const InputActivity &) = delete;

    // True within two seconds after the last input, and where the compositor does not tell.
    bool isActive() const { return isActive_; }

    Handle onChange(std::function<void()> observer);

  private:
    void set(bool isActive);

    ProtocolPointer<wl_seat> seat_;
    ProtocolPointer<ext_idle_notifier_v1> notifier_;
    ProtocolPointer<ext_idle_notification_v1> notification_;
    ProtocolPointer<org_kde_kwin_idle> olderNotifier_; // where the other is missing
    ProtocolPointer<org_kde_kwin_idle_timeout> timeout_;
    bool isActive_ = true;
    Signal<> changed_;
};

} // namespace lumo::wayland
