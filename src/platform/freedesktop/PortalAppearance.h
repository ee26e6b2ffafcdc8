#pragma once

#include "platform/Appearance.h"
#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>
#include <optional>

namespace lumo::freedesktop {

class SessionBus;

// The preference as the desktop's portal tells it on the session bus. Nothing is asked before the
// first subscription. Main thread only.
class PortalAppearance final : public Appearance {
  public:
    // The bus outlives the object.
    explicit PortalAppearance(SessionBus &bus);

    std::optional<bool> prefersDark() const override { return prefersDark_; }
    Handle onChange(std::function<void()> observer) override;

  private:
    void listen();
    void ask();
    void take(GVariant *colorScheme);

    SessionBus &bus_;
    std::optional<bool> prefersDark_;
    Signal<> changed_;
    Handle busChanges_; // none before the first subscription
    Handle announcements_;
    AsyncCalls calls_;
};

} // namespace lumo::freedesktop
