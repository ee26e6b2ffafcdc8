#pragma once

#include "platform/wayland/sway/SwayConnection.h"
#include "platform/wayland/sway/UnmanagedWindows.h"
#include "platform/wayland/windows/AskingPace.h"
#include "platform/wayland/windows/WindowSource.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::wayland {
class InputActivity;
}

namespace lumo::wayland::sway {

// The windows of sway. There is no smaller question that tells where a window is than the one for
// all of them, so that is asked after each event, and as often as AskingPace says.
class SwaySource final : public WindowSource {
  public:
    // Waits for sway's first answer; null when there is none that can be read. All arguments
    // outlive the object.
    static std::unique_ptr<SwaySource> open(SwayConnection &connection, InputActivity &input,
                                            freedesktop::GlibMainLoop &mainLoop);

    const DesktopState &state() const override { return state_; }
    Handle onChange(std::function<void()> observer) override;

    // It does among floating windows, but tiled ones stay where they are.
    bool focusRaises() const override { return false; }

    void activate(std::uint32_t window) override;
    void raise(std::uint32_t window) override { activate(window); }

  private:
    enum class Reason { event, clock };
    enum class Asking {
        none,
        once,  // an answer is on its way
        again, // something has happened since it was asked for
    };

    SwaySource(SwayConnection &connection, InputActivity &input,
               freedesktop::GlibMainLoop &mainLoop);

    void handle(const Message &event);
    void ask(Reason reason);
    void take(const std::string &tree, Reason reason);
    void followXwayland(const DesktopState &state);
    void adopt(DesktopState state, Reason reason);
    void schedule();

    SwayConnection &connection_;
    freedesktop::GlibMainLoop &mainLoop_;
    DesktopState state_;
    std::string tree_;                          // that the state was made from
    std::optional<UnmanagedWindows> unmanaged_; // while there are windows of X applications
    AskingPace pace_;
    Asking asking_ = Asking::none;
    Handle nextQuestion_;
    Signal<> changed_;
    std::array<Handle, 2> events_;
    Lifetime lifetime_;
};

} // namespace lumo::wayland::sway
