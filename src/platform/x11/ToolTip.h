#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/server/ServerResource.h"
#include "support/Handle.h"

#include <xcb/xcb.h>

#include <string>

namespace lumo {
class MainLoop;
}

namespace lumo::x11 {

class Connection;
class RenderFormats;
class ServerImages;
class X11Screens;

// A line of text beside an icon that the pointer rests on. Lets clicks through. Costs nothing while
// the pointer is elsewhere. Main thread only.
class ToolTip {
  public:
    // The arguments outlive the object.
    ToolTip(Connection &connection, const RenderFormats &formats, ServerImages &images,
            const X11Screens &screens, MainLoop &mainLoop);
    ~ToolTip();
    ToolTip(const ToolTip &) = delete;
    ToolTip &operator=(const ToolTip &) = delete;

    void setText(const std::string &text) { text_ = text; } // counts when it is shown next
    const std::string &text() const { return text_; }

    // The pointer has moved within the icon, which is given on the root window.
    void pointerMoved(const drawing::PixelRect &icon);

    // The pointer has left the icon, or the icon is gone.
    void pointerLeft();

    // The user acts on the icon: nothing is shown until the pointer has left it.
    void dismiss();

  private:
    enum class State { away, resting, shown, dismissed };

    void show(const drawing::PixelRect &icon);
    drawing::PixelRect place(const drawing::PixelRect &icon, int width, int height) const;
    void makeWindow(const drawing::PixelRect &area);

    Connection &connection_;
    const RenderFormats &formats_;
    ServerImages &images_;
    const X11Screens &screens_;
    MainLoop &mainLoop_;
    std::string text_;
    State state_ = State::away;
    Handle delay_;
    OwnedWindow window_;
};

} // namespace lumo::x11
