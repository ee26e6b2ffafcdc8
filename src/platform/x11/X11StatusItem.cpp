#include "platform/x11/X11StatusItem.h"

#include "platform/x11/server/X11Screens.h"

#include <utility>

namespace lumo::x11 {

namespace {

Point pointOf(const drawing::PointSpace &space, int x, int y) {
    const auto pixel = space.screenFrame({x, y, 1, 1});
    return {pixel.x, pixel.maxY()};
}

} // namespace

X11StatusItem::X11StatusItem(Connection &connection, const RenderFormats &formats,
                             const X11Screens &screens, MainLoop &mainLoop,
                             freedesktop::SessionBus &bus)
    : screens_(screens)
    , notifierItem_(bus)
    , trayIcon_(connection, formats, screens, mainLoop) {
    observations_.push_back(notifierItem_.onHostChange([this] { choosePlace(); }));
    observations_.push_back(trayIcon_.onTrayChange([this] { choosePlace(); }));
    observations_.push_back(notifierItem_.onContextMenu([this](int x, int y) {
        clicked_.emit({std::nullopt, pointOf(screens_.pointSpace(), x, y)});
    }));
    observations_.push_back(trayIcon_.onRightMouseUp([this](const TrayIcon::Click &click) {
        const auto &space = screens_.pointSpace();
        clicked_.emit({space.screenFrame(click.icon), pointOf(space, click.x, click.y)});
    }));
}

void X11StatusItem::choosePlace() {
    const auto process = trayIcon_.trayProcess();
    const bool isInTray = process != 0 && process == notifierItem_.watcherProcess();
    notifierItem_.setHidden(isInTray);
    trayIcon_.setHidden(notifierItem_.hasHost() && !isInTray);
    shownChanged_.emit();
}

void X11StatusItem::setToolTip(const std::string &text) {
    notifierItem_.setToolTip(text);
    trayIcon_.setToolTip(text);
}

void X11StatusItem::setTitle(const StatusTitle &title) {
    notifierItem_.setTitle(title);
    trayIcon_.setTitle(title);
}

Handle X11StatusItem::onShownChange(std::function<void()> observer) {
    return shownChanged_.subscribe(std::move(observer));
}

Handle X11StatusItem::onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) {
    return clicked_.subscribe(std::move(observer));
}

} // namespace lumo::x11
