#pragma once

#include "platform/freedesktop/SessionBus.h"
#include "platform/wayland/kwin/KWinHotKeys.h"
#include "platform/wayland/kwin/KWinScript.h"
#include "platform/wayland/kwin/PlasmaSource.h"
#include "platform/wayland/windows/Compositor.h"
#include "support/Signal.h"

#include <functional>
#include <memory>
#include <string>

namespace lumo::wayland {
class Connection;
class WaylandKeyboard;
} // namespace lumo::wayland

namespace lumo::wayland::kwin {

// KDE's KWin, by Plasma's protocols, KDE's service for hot keys, and scripts for what both lack.
// Main thread only.
class KWinCompositor final : public Compositor {
  public:
    // Whether the connection's compositor is KWin, whatever it lets this program do.
    static bool isAt(const Connection &connection);

    // Waits for KWin; null when it does not tell this program about its windows. The arguments
    // outlive the object.
    static std::unique_ptr<KWinCompositor>
    find(Connection &connection, freedesktop::SessionBus &bus, const WaylandKeyboard &keyboard);

    WindowSource &windows() override { return windows_; }
    HotKeyService &hotKeys() override { return hotKeys_; }
    Handle onLost(std::function<void()> /*function*/) override { return {}; }
    void placeWindows(const std::string &title, const drawing::PixelRect &area,
                      const drawing::PixelRect &point) override;
    bool mayBlur() const override { return true; }
    bool tellsOfPointer() const override { return true; }
    Handle onPointerStroke(std::function<void(double deltaX)> observer) override;

  private:
    KWinCompositor(Connection &connection, freedesktop::SessionBus &bus,
                   const WaylandKeyboard &keyboard);

    freedesktop::SessionBus &bus_;
    PlasmaSource windows_;
    KWinHotKeys hotKeys_;
    KWinScript desktop_;
    std::unique_ptr<KWinScript> placement_; // once a window was to be placed
    std::unique_ptr<KWinScript> pointer_;   // while a stroke is observed
    Signal<double> strokes_;
};

} // namespace lumo::wayland::kwin
