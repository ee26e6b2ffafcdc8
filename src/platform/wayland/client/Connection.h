#pragma once

#include "platform/wayland/client/ProtocolPointers.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <wayland-client.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::freedesktop {
class GlibMainLoop;
}

namespace lumo::wayland {

// Lumo's own connection to the Wayland compositor, beside any toolkit's. Main thread only.
//
// What a compositor may answer at any time, that an object is gone, is an event; a request that it
// takes for an error ends the connection for good, so each is made by the letter of its protocol.
class Connection {
  public:
    // An object that the compositor offers to everyone.
    struct Global {
        std::uint32_t name = 0;
        std::string interface;
        std::uint32_t version = 0;
    };

    // Connects to the compositor that WAYLAND_DISPLAY names, and waits for its list of globals.
    // Null when none answers.
    static std::unique_ptr<Connection> open();

    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    wl_display *display() const { return display_.get(); }
    const std::vector<Global> &globals() const { return globals_; }

    bool offers(const wl_interface &interface) const { return find(interface) != nullptr; }

    // The first global of that interface, in the lower of both versions; null where there is none.
    template <class T>
    ProtocolPointer<T> bind(const wl_interface &interface, std::uint32_t version) const {
        const auto *global = find(interface);
        return global != nullptr ? bind<T>(*global, interface, version) : nullptr;
    }

    template <class T>
    ProtocolPointer<T> bind(const Global &global, const wl_interface &interface,
                            std::uint32_t version) const {
        return ProtocolPointer<T>(static_cast<T *>(bindGlobal(global, interface, version)));
    }

    // Call the observers after a global has come or gone, within a dispatch.
    Handle onGlobalAdded(std::function<void(const Global &)> observer);
    Handle onGlobalRemoved(std::function<void(const Global &)> observer);

    // Calls the observer at the end of each batch of events: the moment to act once on what it has
    // changed.
    Handle onDispatched(std::function<void()> observer);

    // Waits until the compositor has answered all requests so far. For start-up only. False when it
    // is gone.
    bool roundTrip();

    // The process of the compositor, 0 when unknown, and the name that it runs under, or
    // "the compositor".
    std::int32_t compositorProcess() const;
    std::string compositorName() const;

    // Reads and dispatches in the main loop from now on, and sends what was asked for before each
    // wait. Calls the function once when the compositor is gone.
    Handle run(freedesktop::GlibMainLoop &mainLoop, std::function<void()> lost);

  private:
    struct Disconnect {
        void operator()(wl_display *display) const noexcept;
    };

    explicit Connection(wl_display *display);

    const Global *find(const wl_interface &interface) const;
    void *bindGlobal(const Global &global, const wl_interface &interface,
                     std::uint32_t version) const;
    bool prepareToWait(MainLoop &mainLoop);
    bool dispatch();

    std::unique_ptr<wl_display, Disconnect> display_;
    ProtocolPointer<wl_registry> registry_;
    std::vector<Global> globals_;
    Signal<Global> added_;
    Signal<Global> removed_;
    Signal<> dispatched_;
    Handle nextFlush_;
};

} // namespace lumo::wayland
