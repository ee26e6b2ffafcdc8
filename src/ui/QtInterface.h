#pragma once

#include "platform/Platform.h"
#include "platform/ViewHost.h"
#include "presentation/UserInterface.h"
#include "support/Lifetime.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace lumo {

class Appearance;

// What the toolkit needs of the desktop beyond the platform's interfaces. Everything may be left
// out.
struct ToolkitHooks {
    // The toolkit's name for the window system, as "xcb"; its own choice when empty.
    std::string windowSystem = {};
    // Sees each native event before the toolkit does; true drops the event.
    std::function<bool(const void *nativeEvent)> handleNativeEvent = {};
    // Has the function turn the main loop once, waiting for work, while the handle is kept: needed
    // where the toolkit sends what it has to say to the desktop only when it knows of the wait.
    std::function<Handle(std::function<void()> turn)> turnLoopBy = {};
    // Is told that the toolkit has lost the desktop, and ends the program without a word. May be
    // called on another thread.
    std::function<void()> noteDesktopLost = {};
    // Sees each key press in a window of the toolkit before the window does, as an XKB key code
    // with bits of modifierFlag; true drops the press. Where handleNativeEvent() can't.
    std::function<bool(std::uint32_t keycode, std::uint32_t modifiers)> handleKeyPress = {};
    // Is told of a popover that is about to be shown as a window with that title, and with that
    // size and radius of its corners in points. The desktop places it, and it closes when it is no
    // longer active. Without, it is a window that the toolkit places.
    std::function<void(const std::string &title, const StatusItemPlace &place, const Size &size,
                       double cornerRadius)>
        preparePopover = {};
    // Is given the window system's number of each window that the toolkit makes.
    std::function<void(std::uintptr_t window)> noteWindow = {};
    // Whether the desktop blends windows, so that a window may be translucent.
    std::function<bool()> blendsWindows = {};
    // Calls the observer, while the handle is kept, when a mouse button goes down or up anywhere:
    // 1 left, 2 middle, 3 right, more for wheels and others. Empty handles where the backend can't
    // report them.
    std::function<Handle(std::function<void(unsigned button, bool isDown)>)> watchButtons = {};
    // Is called some time after the last of what the toolkit showed has gone.
    std::function<void()> noteUnused = {};
    Appearance *appearance = nullptr; // outlives the interface
    // Draws what is around the popover's and the windows' views; outlives the interface.
    ViewHost *viewHost = nullptr;
};

// The interface in Qt's widgets. The toolkit is started when something is first shown, and turns
// with the main loop that the program runs; its windows are made when they are shown and freed when
// they are closed.
class QtInterface final : public UserInterface {
  public:
    explicit QtInterface(const Platform &platform, ToolkitHooks hooks = {});
    ~QtInterface() override;
    QtInterface(const QtInterface &) = delete;
    QtInterface &operator=(const QtInterface &) = delete;

    std::unique_ptr<Popover> makePopover(StatusMenu &menu) override;
    std::unique_ptr<InterfaceWindow> makeSettingsWindow(const SettingsModel &model,
                                                        std::function<void()> onWillClose) override;
    std::unique_ptr<InterfaceWindow> makeGuidanceWindow(const GuidanceModel &model,
                                                        std::function<void()> onWillClose) override;
    void showMessage(const std::string &title, const std::string &text) override;

  private:
    class Toolkit;
    class Window;
    class StatusPopover;

    void startToolkit();
    std::unique_ptr<InterfaceWindow> makeWindow(const char *title, QWidget *view,
                                                HostedWindowKind kind,
                                                std::function<void()> onWillClose);

    // Hides the window now and destroys it in a later turn: it may be what calls.
    void discard(std::unique_ptr<QWidget> window);
    void noteWhenUnused();

    Platform platform_;
    ToolkitHooks hooks_;
    std::unique_ptr<Toolkit> toolkit_; // null until something is shown
    std::vector<std::unique_ptr<QWidget>> discarded_;
    Handle unused_; // until that is noted
    std::unique_ptr<InterfaceWindow> message_;
    Lifetime lifetime_;
};

} // namespace lumo
