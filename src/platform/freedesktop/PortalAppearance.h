#pragma once

#include "platform/Appearance.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <memory>
#include <optional>

using GVariant = struct _GVariant; // NOLINT(bugprone-reserved-identifier,cert-dcl*): its own name

namespace lumo::freedesktop {

class Cancellation;
class SessionBus;

// The preference as the desktop's portal tells it on the session bus. Nothing is asked before
// somebody subscribes.
class PortalAppearance final : public Appearance {
  public:
    // The bus outlives the object.
    explicit PortalAppearance(SessionBus &bus);
    ~PortalAppearance() override;
    PortalAppearance(const PortalAppearance &) = delete;
    PortalAppearance &operator=(const PortalAppearance &) = delete;

    std::optional<bool> prefersDark() const override { return prefersDark_; }
    Handle onChange(std::function<void()> observer) override;

  private:
    void listen();
    void ask();
    void take(GVariant *colorScheme);

    SessionBus &bus_;
    std::unique_ptr<Cancellation> cancellation_;
    std::optional<bool> prefersDark_;
    Signal<> changed_;
    Handle busChanges_; // none until somebody subscribes
    Handle announcements_;
    Lifetime lifetime_;
};

} // namespace lumo::freedesktop
