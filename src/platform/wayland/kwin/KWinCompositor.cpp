#include "platform/wayland/kwin/KWinCompositor.h"

#include "platform/wayland/client/Connection.h"
#include "platform/wayland/kwin/ScriptCode.h"

#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace lumo::wayland::kwin {

bool KWinCompositor::isAt(const Connection &connection) {
    return connection.compositorName().starts_with("kwin_wayland");
}

std::unique_ptr<KWinCompositor> KWinCompositor::find(Connection &connection,
                                                     freedesktop::SessionBus &bus,
                                                     const WaylandKeyboard &keyboard) {
    return PlasmaSource::isOffered(connection)
               ? std::unique_ptr<KWinCompositor>(new KWinCompositor(connection, bus, keyboard))
               : nullptr;
}

KWinCompositor::KWinCompositor(Connection &connection, freedesktop::SessionBus &bus,
                               const WaylandKeyboard &keyboard)
    : bus_(bus)
    , windows_(connection)
    , hotKeys_(bus, keyboard)
    , desktop_(bus, "Desktop", desktopScript, [this](const std::string &message) {
        if (const auto facts = factsOf(message)) {
            windows_.setFacts(*facts);
        }
    }) {
}

void KWinCompositor::placeWindows(const std::string &title, const drawing::PixelRect &area,
                                  const drawing::PixelRect &point) {
    placement_.reset();
    placement_ = std::make_unique<KWinScript>(bus_, "Placement",
                                              placementScript(getpid(), title, area, point),
                                              [](const std::string & /*message*/) {});
}

Handle KWinCompositor::onPointerStroke(std::function<void(double deltaX)> observer) {
    if (!pointer_) {
        pointer_ = std::make_unique<KWinScript>(
            bus_, "Pointer", pointerScript, [this](const std::string &travelled) {
                strokes_.emit(std::strtod(travelled.c_str(), nullptr));
            });
    }
    auto subscription = std::make_shared<Handle>(strokes_.subscribe(std::move(observer)));
    return Handle([this, subscription] {
        subscription->reset();
        if (!strokes_.isObserved()) {
            pointer_.reset();
        }
    });
}

} // namespace lumo::wayland::kwin
