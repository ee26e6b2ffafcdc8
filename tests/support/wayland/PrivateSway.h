#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/LumoProcess.h"
#include "desktop/MessageBus.h"
#include "desktop/Picture.h"
#include "desktop/TemporaryDirectory.h"
#include "wayland/WaylandHands.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {

struct SwayOptions {
    int outputs = 1; // of 1280 x 720 pixels each, side by side
    std::string configuration = {};
    bool hasXwayland = false;
};

// sway without a screen, in a fresh home directory and with a session bus of its own. Since sway
// refuses to run as root, everything runs as nobody then. Making it returns when sway is at work
// and throws, with what it said, when it does not get there. What was started on it ends with it.
class PrivateSway {
  public:
    explicit PrivateSway(const SwayOptions &options = {});
    ~PrivateSway();
    PrivateSway(const PrivateSway &) = delete;
    PrivateSway &operator=(const PrivateSway &) = delete;

    // Starts a program on it, which ends with the returned object.
    std::unique_ptr<ChildProcess> start(std::vector<std::string> command,
                                        const Environment &variables = {}) const;

    // The real program, with these settings.
    std::unique_ptr<ChildProcess> startLumo(const Preferences &preferences,
                                            const Environment &variables = {}) const;

    // The sample application with a window of that size in points.
    std::unique_ptr<ChildProcess> startSample(const std::string &name, const std::string &colour,
                                              int width = 400, int height = 300) const;

    // Has sway obey a command of its configuration's language; false when it does not.
    bool command(const std::string &text) const;

    // What sway answers to a question by the name that swaymsg has for it, in JSON.
    std::string ask(const std::string &question) const;

    // The pixels of an output as shown.
    Picture picture(const std::string &output = "HEADLESS-1") const;

    WaylandHands &hands() { return *hands_; }
    ChildProcess &process() { return *sway_; }
    MessageBus &bus() { return bus_; }

  private:
    std::vector<std::string> asUser(std::vector<std::string> command) const;
    std::filesystem::path runnable(const std::filesystem::path &program) const;
    void own() const;

    TemporaryDirectory directory_;
    MessageBus bus_;
    Environment environment_;
    std::unique_ptr<ChildProcess> sway_;
    std::unique_ptr<WaylandHands> hands_;
};

} // namespace lumo::desktop
