#include "platform/wayland/client/Connection.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/PeerProcess.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <utility>

namespace lumo::wayland {

namespace {

constexpr double pauseBeforeFlush = 0.01; // seconds, while the compositor reads nothing

} // namespace

void Connection::Disconnect::operator()(wl_display *display) const noexcept {
    wl_display_disconnect(display);
}

std::unique_ptr<Connection> Connection::open() {
    auto *display = wl_display_connect(nullptr);
    if (display == nullptr) {
        return nullptr;
    }
    std::unique_ptr<Connection> connection(new Connection(display));
    return connection->roundTrip() ? std::move(connection) : nullptr;
}

Connection::Connection(wl_display *display)
    : display_(display)
    , registry_(wl_display_get_registry(display)) {
    static const wl_registry_listener listener = {
        [](void *data, wl_registry *, std::uint32_t name, const char *interface,
           std::uint32_t version) {
            auto &self = *static_cast<Connection *>(data);
            const Global global{name, interface, version};
            self.globals_.push_back(global);
            self.added_.emit(global);
        },
        [](void *data, wl_registry *, std::uint32_t name) {
            auto &self = *static_cast<Connection *>(data);
            const auto found = std::ranges::find(self.globals_, name, &Global::name);
            if (found != self.globals_.end()) {
                const auto global = *found;
                self.globals_.erase(found);
                self.removed_.emit(global);
            }
        }};
    wl_registry_add_listener(registry_.get(), &listener, this);
}

Connection::~Connection() = default;

const Connection::Global *Connection::find(const wl_interface &interface) const {
    const auto found =
        std::ranges::find(globals_, std::string_view(interface.name), &Global::interface);
    return found != globals_.end() ? &*found : nullptr;
}

void *Connection::bindGlobal(const Global &global, const wl_interface &interface,
                             std::uint32_t version) const {
    return wl_registry_bind(registry_.get(), global.name, &interface,
                            std::min(version, global.version));
}

Handle Connection::onGlobalAdded(std::function<void(const Global &)> observer) {
    return added_.subscribe(std::move(observer));
}

Handle Connection::onGlobalRemoved(std::function<void(const Global &)> observer) {
    return removed_.subscribe(std::move(observer));
}

Handle Connection::onDispatched(std::function<void()> observer) {
    return dispatched_.subscribe(std::move(observer));
}

bool Connection::roundTrip() {
    const bool isAlive = wl_display_roundtrip(display_.get()) >= 0;
    dispatched_.emit();
    return isAlive;
}

std::int32_t Connection::compositorProcess() const {
    return freedesktop::peerProcess(wl_display_get_fd(display_.get()));
}

std::string Connection::compositorName() const {
    std::ifstream file("/proc/" + std::to_string(compositorProcess()) + "/comm");
    std::string name;
    return std::getline(file, name) && !name.empty() ? name : "the compositor";
}

Handle Connection::run(freedesktop::GlibMainLoop &mainLoop, std::function<void()> lost) {
    return mainLoop.watch(wl_display_get_fd(display_.get()),
                          {.prepare = [this, &mainLoop] { return prepareToWait(mainLoop); },
                           .dispatch =
                               [this, lost = std::move(lost)] {
                                   const bool isAlive = dispatch();
                                   if (!isAlive) {
                                       lost();
                                   }
                                   return isAlive;
                               }});
}

bool Connection::prepareToWait(MainLoop &mainLoop) {
    if (wl_display_prepare_read(display_.get()) != 0) {
        return true; // events wait to be dispatched
    }
    wl_display_cancel_read(display_.get());
    if (wl_display_flush(display_.get()) >= 0) {
        nextFlush_.reset();
        return false;
    }
    if (errno == EAGAIN && !nextFlush_) {
        nextFlush_ = mainLoop.after(pauseBeforeFlush, [this] { nextFlush_.reset(); });
    }
    return wl_display_get_error(display_.get()) != 0;
}

bool Connection::dispatch() {
    auto *display = display_.get();
    if (wl_display_prepare_read(display) == 0 && wl_display_read_events(display) < 0) {
        return false;
    }
    if (wl_display_dispatch_pending(display) < 0) {
        return false;
    }
    dispatched_.emit();
    return true;
}

} // namespace lumo::wayland
