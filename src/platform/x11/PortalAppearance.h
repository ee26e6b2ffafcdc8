#pragma once

#include "platform/Appearance.h"
#include "platform/MainLoop.h"
#include "platform/x11/SessionBus.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <memory>
#include <optional>

using GVariant = struct _GVariant; // NOLINT(bugprone-reserved-identifier,cert-dcl*): its own name

namespace lumo::x11 {

class Cancellation;

// The preference as the desktop's portal tells it on the session bus. Nothing is asked before
// somebody subscribes.
class PortalAppearance final : public Appearance {
  public:
    // The main loop outlives the object.
    explicit PortalAppearance(MainLoop &mainLoop);
    ~PortalAppearance() override;
    PortalAppearance(const PortalAppearance &) = delete;
    PortalAppearance &operator=(const PortalAppearance &) = delete;

    std::optional<bool> prefersDark() const override { return prefersDark_; }
    Handle onChange(std::function<void()> observer) override;

  private:
    void listen();
    void ask();
    void take(GVariant *colorScheme);

    MainLoop &mainLoop_;
    std::unique_ptr<Cancellation> cancellation_;
    std::optional<bool> prefersDark_;
    Signal<> changed_;
    std::unique_ptr<SessionBus> bus_; // null until somebody subscribes
    Handle busChanges_;
    Handle announcements_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
