#include "platform/wayland/sway/SwayCompositor.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/wayland/client/Connection.h"

#include <unistd.h>

#include <utility>

namespace lumo::wayland::sway {

std::unique_ptr<SwayCompositor> SwayCompositor::find(const wayland::Connection &connection,
                                                     const WaylandKeyboard &keyboard,
                                                     freedesktop::GlibMainLoop &mainLoop) {
    auto sway = SwayConnection::open(connection.compositorProcess());
    if (!sway) {
        return nullptr;
    }
    std::unique_ptr<SwayCompositor> found(
        new SwayCompositor(connection, keyboard, std::move(sway), mainLoop));
    return found->windows_ ? std::move(found) : nullptr;
}

SwayCompositor::SwayCompositor(const wayland::Connection &connection,
                               const WaylandKeyboard &keyboard,
                               std::unique_ptr<SwayConnection> sway,
                               freedesktop::GlibMainLoop &mainLoop)
    : connection_(std::move(sway))
    , input_(connection)
    , windows_(SwaySource::open(*connection_, input_, mainLoop))
    , hotKeys_(*connection_, keyboard)
    , listening_(connection_->listen(mainLoop, [this] { lost_.emit(); })) {
}

// The later one of two rules for the same window holds. Without the quotes sway would obey all but
// the first of the rule's commands at once, for the focused window.
void SwayCompositor::placeWindows(const std::string &title, const drawing::PixelRect &area,
                                  const drawing::PixelRect & /*point*/) {
    connection_->run("for_window [pid=" + std::to_string(getpid()) + " title=\"^" + title +
                     "$\"] 'floating enable, border none, move absolute position " +
                     std::to_string(area.x) + ' ' + std::to_string(area.y) + ", focus'");
}

Handle SwayCompositor::onLost(std::function<void()> function) {
    return lost_.subscribe(std::move(function));
}

} // namespace lumo::wayland::sway
