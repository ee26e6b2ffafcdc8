#include "platform/x11/X11WindowServer.h"

#include "platform/x11/WindowMirror.h"
#include "platform/x11/X11Screens.h"
#include "platform/x11/X11Workspace.h"

#include <algorithm>
#include <string>

namespace lumo::x11 {

namespace {

int layerOf(const MirrorWindow &window) {
    switch (window.band) {
    case WindowBand::below:
        return X11WindowServer::belowLayer;
    case WindowBand::above:
        return window.isDock ? X11WindowServer::dockLayer : X11WindowServer::aboveLayer;
    case WindowBand::floating:
        return X11WindowServer::floatingLayer;
    case WindowBand::desktop:
    case WindowBand::normal:
        break;
    }
    return 0;
}

bool overlap(const PixelRect &a, const PixelRect &b) {
    return a.x < b.maxX() && b.x < a.maxX() && a.y < b.maxY() && b.y < a.maxY();
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
    const auto active = mirror_.activeWindow();
    const auto *activeWindow = active ? mirror_.find(*active) : nullptr;
    WindowRecords records;
    std::optional<std::size_t> firstOrdinary;
    const auto &stacking = mirror_.stacking();
    for (std::size_t i = stacking.size(); i-- > 0;) {
        const auto &window = *mirror_.find(stacking[i]);
        if (!isOnScreen(window)) {
            continue;
        }
        if (window.band == WindowBand::normal && !firstOrdinary) {
            firstOrdinary = records.size();
        }
        records.push_back(makeRecord(window));
        if (&window == activeWindow && window.band == WindowBand::normal) {
            std::rotate(records.begin() + static_cast<std::ptrdiff_t>(*firstOrdinary),
                        records.end() - 1, records.end());
        }
    }
    return records;
}

bool X11WindowServer::isOnScreen(const MirrorWindow &window) const {
    if (!window.isDescribed || !window.isMapped || window.isInputOnly || window.isMinimized ||
        window.band == WindowBand::desktop || !mirror_.isOnCurrentDesktop(window)) {
        return false;
    }
    const auto &screens = screens_.pixelRects();
    return std::any_of(screens.begin(), screens.end(),
                       [&](const auto &screen) { return overlap(screen, window.geometry); });
}

Dictionary X11WindowServer::makeRecord(const MirrorWindow &window) const {
    const auto bounds = screens_.pointSpace().windowBounds(window.visibleArea());
    const auto *owner = workspace_.runningApplication(window.processIdentifier);
    Dictionary record = {
        {windowKey::number, Value(window.client)},
        {windowKey::ownerPID, Value(window.processIdentifier)},
        {windowKey::ownerName,
         Value(owner != nullptr && owner->localizedName ? *owner->localizedName
                                                        : window.className)},
        {windowKey::layer, Value(layerOf(window))},
        {windowKey::bounds, Value(Dictionary{{boundsKey::x, Value(bounds.x)},
                                             {boundsKey::y, Value(bounds.y)},
                                             {boundsKey::width, Value(bounds.width)},
                                             {boundsKey::height, Value(bounds.height)}})},
        {windowKey::isOnscreen, Value(true)},
        {windowKey::alpha, Value(window.opacity)},
    };
    if (window.title) {
        record.set(windowKey::name, Value(*window.title));
    }
    return record;
}

} // namespace lumo::x11
