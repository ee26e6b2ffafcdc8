#include "platform/wayland/windows/WaylandWindowServer.h"

#include "platform/wayland/client/WaylandScreens.h"
#include "platform/wayland/windows/WaylandWorkspace.h"
#include "platform/wayland/windows/WindowSource.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace lumo::wayland {

namespace {

int layerOf(const DesktopWindow &window) {
    switch (window.layer) {
    case DesktopWindow::Layer::below:
        return -1;
    case DesktopWindow::Layer::above:
        return 3;
    case DesktopWindow::Layer::dock:
        return 20;
    case DesktopWindow::Layer::ordinary:
        break;
    }
    return 0;
}

// From the last owner to the focused window itself. Owners may name each other in a circle.
std::vector<const DesktopWindow *> focusedWindowAndOwners(const DesktopState &state) {
    std::vector<const DesktopWindow *> found;
    const auto *window = state.focused();
    while (window != nullptr && std::ranges::find(found, window) == found.end()) {
        found.push_back(window);
        window = window->transientFor ? state.find(*window->transientFor) : nullptr;
    }
    std::ranges::reverse(found);
    return found;
}

} // namespace

WaylandWindowServer::WaylandWindowServer(WindowSource &source, WaylandScreens &screens,
                                         WaylandWorkspace &workspace)
    : source_(source)
    , screens_(screens)
    , workspace_(workspace)
    , changes_{source.onChange([this] { isStale_ = true; }),
               screens.onScreenParametersDidChange([this] { isStale_ = true; }),
               workspace.onEntriesDidChange([this] { isStale_ = true; })} {
}

std::shared_ptr<const WindowRecords> WaylandWindowServer::onScreenWindows() const {
    if (std::exchange(isStale_, false)) {
        auto records = makeRecords();
        if (!records_ || *records_ != records) {
            records_ = std::make_shared<const WindowRecords>(std::move(records));
        }
    }
    return records_;
}

WindowRecords WaylandWindowServer::makeRecords() const {
    const auto &state = source_.state();
    std::vector<const DesktopWindow *> windows;
    for (std::size_t i = state.windows.size(); i-- > 0;) {
        const auto &window = state.windows[i];
        const auto isOn = [&](const Output &output) { return output.area.overlaps(window.frame); };
        if (window.presence == DesktopWindow::Presence::shown &&
            std::ranges::any_of(screens_.outputs(), isOn)) {
            windows.push_back(&window);
        }
    }
    const auto isOrdinary = [](const DesktopWindow *window) {
        return window->layer == DesktopWindow::Layer::ordinary;
    };
    const auto firstOrdinary = std::ranges::find_if(windows, isOrdinary);
    for (const auto *front : focusedWindowAndOwners(state)) {
        const auto place = std::find(firstOrdinary, windows.end(), front);
        if (place != windows.end() && isOrdinary(front)) {
            std::rotate(firstOrdinary, place, place + 1);
        }
    }
    WindowRecords records;
    records.reserve(windows.size());
    for (const auto *window : windows) {
        records.push_back(makeRecord(*window));
    }
    return records;
}

WindowRecord WaylandWindowServer::makeRecord(const DesktopWindow &window) const {
    const auto *owner = workspace_.runningApplication(window.process);
    return {.number = window.identifier,
            .ownerProcess = window.process,
            .ownerName = owner != nullptr && owner->localizedName ? *owner->localizedName
                                                                  : window.application,
            .layer = layerOf(window),
            .bounds = screens_.pointSpace().windowBounds(window.frame),
            .isOnScreen = true,
            .title = window.title};
}

} // namespace lumo::wayland
