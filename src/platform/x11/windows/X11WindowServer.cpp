#include "platform/x11/windows/X11WindowServer.h"

#include "platform/x11/server/X11Screens.h"
#include "platform/x11/windows/WindowMirror.h"
#include "platform/x11/windows/X11Workspace.h"

#include <algorithm>
#include <string>

namespace lumo::x11 {

namespace {

int layerOf(const MirrorWindow &window) {
    switch (window.stackingLayer) {
    case StackingLayer::below:
        return X11WindowServer::belowLayer;
    case StackingLayer::above:
        return window.type == WindowFacts::Type::dock ? X11WindowServer::dockLayer
                                                      : X11WindowServer::aboveLayer;
    case StackingLayer::floating:
        return X11WindowServer::floatingLayer;
    case StackingLayer::desktop:
    case StackingLayer::normal:
        break;
    }
    return 0;
}

} // namespace

X11WindowServer::X11WindowServer(const WindowMirror &mirror, const X11Screens &screens,
                                 const X11Workspace &workspace)
    : mirror_(mirror)
    , screens_(screens)
    , workspace_(workspace) {
}

std::shared_ptr<const WindowRecords> X11WindowServer::onScreenWindows() const {
    const Revisions now = {mirror_.revision(), screens_.revision(), workspace_.revision()};
    if (!records_ || now != madeFrom_) {
        auto records = makeRecords();
        madeFrom_ = now;
        if (!records_ || *records_ != records) {
            records_ = std::make_shared<const WindowRecords>(std::move(records));
        }
    }
    return records_;
}

WindowRecords X11WindowServer::makeRecords() const {
    std::vector<const MirrorWindow *> windows;
    const auto &stacking = mirror_.stacking();
    for (std::size_t i = stacking.size(); i-- > 0;) {
        const auto *window = mirror_.find(stacking[i]);
        if (isOnScreen(*window)) {
            windows.push_back(window);
        }
    }
    const auto isOrdinary = [](const MirrorWindow *window) {
        return window->stackingLayer == StackingLayer::normal;
    };
    const auto firstOrdinary = std::ranges::find_if(windows, isOrdinary);
    for (const auto *front : activeWindowAndOwners()) {
        const auto place = std::ranges::find(firstOrdinary, windows.end(), front);
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

// From the last owner to the active window itself; a dock that has become active leaves that to the
// window before it. Owners may name each other in a circle.
std::vector<const MirrorWindow *> X11WindowServer::activeWindowAndOwners() const {
    const auto active = mirror_.activeWindow();
    const auto *activeWindow = active ? mirror_.find(*active) : nullptr;
    const bool isKnown = activeWindow != nullptr && activeWindow->isDescribed;
    if (!active || (isKnown && activeWindow->type != WindowFacts::Type::dock)) {
        lastActive_ = active;
    }
    std::vector<const MirrorWindow *> found;
    auto next = lastActive_;
    while (next) {
        const auto *window = mirror_.find(*next);
        if (window == nullptr || std::ranges::find(found, window) != found.end()) {
            break;
        }
        found.push_back(window);
        next = window->transientFor;
    }
    std::ranges::reverse(found);
    return found;
}

bool X11WindowServer::isOnScreen(const MirrorWindow &window) const {
    if (!window.isDescribed || !window.isMapped || window.isInputOnly || window.isMinimized() ||
        window.stackingLayer == StackingLayer::desktop || !mirror_.isOnShownDesktop(window)) {
        return false;
    }
    // A frame that the window manager has mapped before its window is known to be inside.
    if (!window.isManaged && !window.isOverrideRedirect && !mirror_.windowManagerName().empty()) {
        return false;
    }
    const auto &screens = screens_.pixelRects();
    return std::any_of(screens.begin(), screens.end(),
                       [&](const auto &screen) { return screen.overlaps(window.geometry); });
}

WindowRecord X11WindowServer::makeRecord(const MirrorWindow &window) const {
    const auto *owner = workspace_.runningApplication(window.processIdentifier);
    return {.number = window.client,
            .ownerProcess = window.processIdentifier,
            .ownerName =
                owner != nullptr && owner->localizedName ? *owner->localizedName : window.className,
            .layer = layerOf(window),
            .bounds = screens_.pointSpace().windowBounds(window.visibleArea()),
            .isOnScreen = true,
            .title = window.title,
            .alpha = window.opacity};
}

} // namespace lumo::x11
