#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/DesktopSession.h"
#include "desktop/Picture.h"

#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {

class PrivateDesktop;

// What a sample application's window looks like and is for.
struct SampleWindow {
    std::string title = "Sample";
    Area area = {100, 100, 400, 300}; // of the contents; a window manager adds its frame
    std::string colour = "#808080";
    std::string type = {};  // as "DOCK", of _NET_WM_WINDOW_TYPE; empty for an ordinary window
    std::string state = {}; // as "ABOVE", of _NET_WM_STATE; empty for none
    bool overrideRedirect = false;
    xcb_window_t transientFor = XCB_NONE; // whose dialog it is
    bool page = false; // paints lines as of text and a heading instead of one colour
};

// An application of its own process with windows of known colours, which does as it is told and
// notes every click it gets.
class SampleApplication {
  public:
    struct Click {
        std::size_t window = 0; // index in order of opening
        Spot spot;              // on the root window
        int button = 0;

        bool operator==(const Click &) const = default;
    };

    // Returns when all windows are on screen. The desktop must outlive it.
    SampleApplication(PrivateDesktop &desktop, const std::string &className,
                      const std::vector<SampleWindow> &windows);

    pid_t processIdentifier() const { return process_->processIdentifier(); }
    xcb_window_t window(std::size_t index = 0) const { return windows_.at(index); }

    // Returns when the window is on screen.
    xcb_window_t open(const SampleWindow &window);
    void closeWindow(std::size_t index);

    // Repaints the window 30 times a second in changing colours, or stops that.
    void animate(std::size_t index, bool on);

    std::vector<Click> clicks() const;

    // Ends the program without closing anything first.
    void kill() { process_->kill(); }

  private:
    void noteOpenedWindow();

    PrivateDesktop &desktop_;
    std::unique_ptr<ChildProcess> process_;
    std::vector<xcb_window_t> windows_;
};

} // namespace lumo::desktop
