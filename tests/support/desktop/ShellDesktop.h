#pragma once

#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo::desktop {

// A desktop with a session bus and a panel, on which a user works with the program's dot, popover
// and windows.
class ShellDesktop {
  public:
    explicit ShellDesktop(const DesktopOptions &options = {});

    // Starts the program, with the guidance of the first start behind us, and waits for its dot.
    void start(Preferences preferences = {});

    // What is on screen under that title, frames of window managers aside. appears() waits for
    // exactly one.
    std::vector<xcb_window_t> windowsTitled(const std::string &title);
    std::optional<xcb_window_t> appears(const std::string &title);
    bool disappears(const std::string &title);

    // The middle of the dot; throws with what everybody said when there is none.
    Spot dot();

    std::optional<Area> popover(); // absent while it is not on screen
    bool isPopoverShown() { return popover().has_value(); }

    // With a right click on the dot. True when it is there, takes keys and leaves clicks to others:
    // the toolkit takes both for a moment.
    bool openPopover();
    bool popoverCloses();

    // The row, counted from the first, of the page that the popover has just come to show.
    void chooseRow(int row);

    // Opens the settings window as a second start does; absent when it does not come to the front.
    std::optional<xcb_window_t> openSettings();

    // What the settings file holds under a key, as "<true/>"; empty when it holds nothing.
    std::string stored(const std::string &key);
    bool isStored(const std::string &key, const std::string &value); // waits for it

    PrivateDesktop desktop;
    DesktopSession &session = desktop.session();
    std::unique_ptr<ChildProcess> panel;
    std::unique_ptr<LumoProcess> lumo;
};

} // namespace lumo::desktop
