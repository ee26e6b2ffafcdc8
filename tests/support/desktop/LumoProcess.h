#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/Picture.h"

#include <xcb/xcb.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace lumo::desktop {

class PrivateDesktop;

// Settings by name, as the user's file holds them.
using Preferences = std::map<std::string, std::variant<bool, long, double, std::string>>;

// The effect on and the guidance of the first start behind us: what most tests start from.
Preferences shownEffect(const std::string &effectMode, double intensity);

std::filesystem::path preferencesFile(const PrivateDesktop &desktop);

// Writes the user's settings file, replacing one that is there.
void writePreferences(const std::filesystem::path &file, const Preferences &preferences);
void writePreferences(const PrivateDesktop &desktop, const Preferences &preferences);

// The real program at work on a private desktop. The desktop must outlive it.
class LumoProcess {
  public:
    // One overlay window.
    struct Overlay {
        xcb_window_t window = XCB_NONE;
        Area area;

        bool operator==(const Overlay &) const = default;
    };

    // Starts it with the settings file as it is.
    explicit LumoProcess(PrivateDesktop &desktop);

    // Starts it with these settings, and with these variables beside the desktop's or instead of
    // them.
    LumoProcess(PrivateDesktop &desktop, const Preferences &preferences,
                const Environment &variables = {});

    ChildProcess &process() { return *process_; }
    pid_t processIdentifier() const { return process_->processIdentifier(); }

    // Its overlays on screen, from the bottom to the top.
    std::vector<Overlay> overlays();

    // Waits for that many overlays and returns them; throws with what the program said when they do
    // not come.
    std::vector<Overlay> waitForOverlays(std::size_t count = 1);

    // What it said about itself so far, without its running commentary on displays.
    std::vector<std::string> remarks() const;

    // Asks it to stop and returns its exit status; absent when it did not stop in time.
    std::optional<int> stop();

  private:
    bool isOverlay(xcb_window_t window);

    PrivateDesktop &desktop_;
    std::unique_ptr<ChildProcess> process_;
};

} // namespace lumo::desktop
