#pragma once

#include "platform/wayland/client/ProtocolPointers.h"
#include "platform/wayland/kwin/PlasmaDesktop.h"
#include "platform/wayland/windows/WindowSource.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace lumo::wayland {
class Connection;
}

namespace lumo::wayland::kwin {

// The windows of KWin by the protocol that Plasma's own task bar uses. Every change is an event;
// what arrives in one batch of events is one change, since a change of the focus takes several.
class PlasmaSource final : public WindowSource {
  public:
    // Whether the compositor offers the protocol to this program.
    static bool isOffered(const Connection &connection);

    // Waits for the compositor, which offers the protocol. The connection outlives the object.
    explicit PlasmaSource(Connection &connection);
    ~PlasmaSource() override;
    PlasmaSource(const PlasmaSource &) = delete;
    PlasmaSource &operator=(const PlasmaSource &) = delete;

    // What the protocol leaves out.
    void setFacts(const DesktopFacts &facts);

    const DesktopState &state() const override { return state_; }
    Handle onChange(std::function<void()> observer) override;
    bool focusRaises() const override { return true; }
    void activate(std::uint32_t window) override;

    // The protocol raises only what it gives the focus to.
    void raise(std::uint32_t window) override { activate(window); }

  private:
    struct WindowObject;
    struct SpaceObject;

    void followManager();
    void followSpaces();
    void addWindow(std::uint32_t identifier);
    void removeWindow(std::uint32_t identifier);
    void addSpace(const std::string &identifier);
    void update();

    ProtocolPointer<org_kde_plasma_window_management> manager_;
    ProtocolPointer<org_kde_plasma_virtual_desktop_management> spaceManager_; // null where none is
    PlasmaDesktop desktop_;
    std::map<std::uint32_t, std::unique_ptr<WindowObject>> windows_;
    std::map<std::string, std::unique_ptr<SpaceObject>> spaces_; // by identifier
    bool isStale_ = true;
    DesktopState state_;
    Signal<> changed_;
    Handle dispatches_;
};

} // namespace lumo::wayland::kwin
