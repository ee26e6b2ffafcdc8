#pragma once

#include "drawing/PixelRect.h"
#include "platform/StatusItem.h"
#include "platform/x11/ToolTip.h"
#include "platform/x11/server/ServerImages.h"
#include "platform/x11/server/ServerResource.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace lumo {
class MainLoop;
}

namespace lumo::x11 {

class Connection;
class RenderFormats;
class X11Screens;

// The status item as an icon in a system tray by freedesktop.org's tray protocol: a small window
// that the tray takes into its own. There whenever a tray is and nobody hides it. Main thread only.
class TrayIcon {
  public:
    struct Click {
        drawing::PixelRect icon; // both on the root window
        int x = 0;
        int y = 0;
    };

    // The arguments outlive the object. Waits for the server.
    TrayIcon(Connection &connection, const RenderFormats &formats, const X11Screens &screens,
             MainLoop &mainLoop);
    TrayIcon(const TrayIcon &) = delete;
    TrayIcon &operator=(const TrayIcon &) = delete;

    void setTitle(const StatusTitle &title);
    void setToolTip(const std::string &text);

    // Where something better shows the item.
    void setHidden(bool isHidden);

    bool hasTray() const { return tray_ != XCB_NONE; }

    // The process whose tray draws its icons in a row; 0 when there is none or its process is
    // unknown. A tray that states no orientation has no row: it copies the icons to the session
    // bus, as which they are drawn, and leaves their windows somewhere on the desktop.
    std::int32_t trayProcess() const { return trayProcess_; }

    // Calls the observer after hasTray() or trayProcess() changed.
    Handle onTrayChange(std::function<void()> observer);

    // Calls the observer when the right button was released over the icon.
    Handle onRightMouseUp(std::function<void(const Click &)> observer);

  private:
    std::array<Handle, 5> followWindow();
    std::array<Handle, 4> followPointer();
    void handleRelease(const xcb_button_release_event_t &event);
    void lookForTray();
    void adoptTray(xcb_window_t tray);
    void leaveTray();
    void dock();
    void dock(bool isTranslucent);
    void askWhetherItDraws();
    void askForProcess();
    void setTray(xcb_window_t tray, std::int32_t process);
    void makeWindow(bool isTranslucent);
    void setProperties();
    void removeWindow();
    void paint();

    Connection &connection_;
    const RenderFormats &formats_;
    ServerImages images_;
    int side_; // pixels, for trays that leave it to the icon
    xcb_atom_t selection_;
    xcb_atom_t manager_;
    StatusTitle title_;
    ToolTip toolTip_;
    bool isHidden_ = false;
    xcb_window_t tray_ = XCB_NONE;
    std::int32_t trayProcess_ = 0;
    bool isTranslucent_ = false; // the tray blends, so that the window's alpha counts
    OwnedColormap colormap_;
    OwnedWindow window_;
    OwnedPicture picture_;
    int width_ = 0;
    int height_ = 0;
    Signal<Click> clicked_;
    Signal<> trayChanged_;
    Handle announcements_;
    Handle trayEnd_;
    std::array<Handle, 5> windowEvents_;
    std::array<Handle, 4> pointerEvents_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
