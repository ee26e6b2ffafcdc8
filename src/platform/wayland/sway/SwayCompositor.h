#pragma once

#include "platform/wayland/client/InputActivity.h"
#include "platform/wayland/sway/SwayConnection.h"
#include "platform/wayland/sway/SwayHotKeys.h"
#include "platform/wayland/sway/SwaySource.h"
#include "platform/wayland/windows/Compositor.h"
#include "support/Signal.h"

#include <functional>
#include <memory>
#include <string>

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::wayland {
class Connection;
class WaylandKeyboard;
} // namespace lumo::wayland

namespace lumo::wayland::sway {

// sway, by its IPC. Main thread only.
class SwayCompositor final : public Compositor {
  public:
    // Waits for sway; null when the connection's compositor is none. Both outlive the object.
    static std::unique_ptr<SwayCompositor> find(const wayland::Connection &connection,
                                                const WaylandKeyboard &keyboard,
                                                freedesktop::GlibMainLoop &mainLoop);

    WindowSource &windows() override { return *windows_; }
    HotKeyService &hotKeys() override { return hotKeys_; }
    void placeWindows(const std::string &title, const drawing::PixelRect &area,
                      const drawing::PixelRect &point) override;
    Handle onLost(std::function<void()> function) override;

  private:
    SwayCompositor(const wayland::Connection &connection, const WaylandKeyboard &keyboard,
                   std::unique_ptr<SwayConnection> sway, freedesktop::GlibMainLoop &mainLoop);

    std::unique_ptr<SwayConnection> connection_;
    InputActivity input_;
    std::unique_ptr<SwaySource> windows_; // null when sway has not answered
    SwayHotKeys hotKeys_;
    Signal<> lost_;
    Handle listening_;
};

} // namespace lumo::wayland::sway
