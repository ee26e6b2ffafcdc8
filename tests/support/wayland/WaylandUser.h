#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/LumoProcess.h"
#include "desktop/MessageBus.h"
#include "desktop/TemporaryDirectory.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace lumo::desktop {

// The user whom a compositor without a screen runs for: a fresh home directory and a session bus of
// its own. Since compositors refuse to run as root, everything runs as nobody then. What was
// started ends with the object.
class WaylandUser {
  public:
    // Starts a program, which ends with the returned object.
    std::unique_ptr<ChildProcess> start(std::vector<std::string> command,
                                        const Environment &variables = {}) const;

    // The real program, with these settings.
    std::unique_ptr<ChildProcess> startLumo(const Preferences &preferences,
                                            const Environment &variables = {}) const;

    // The sample application that opens windows on X as it is told.
    std::unique_ptr<ChildProcess> startXSample(const std::string &name) const;

    // The file or folder of that name in the directory of everything.
    std::filesystem::path path(const std::string &name) const { return directory_.path() / name; }

    MessageBus &bus() { return bus_; }

    // Makes this process one of the user's.
    static void become();

  protected:
    WaylandUser();
    ~WaylandUser() = default;

    // Gives all there is to the user that programs run as.
    void own() const;

    // Where the user may run it, without capabilities: others than the tester may not see where it
    // was built.
    std::filesystem::path runnable(const std::filesystem::path &program) const;

    // The sample application with a window of that size in points.
    std::unique_ptr<ChildProcess> startSurface(const std::string &name, const std::string &colour,
                                               int width, int height) const;

    Environment environment_;

  private:
    TemporaryDirectory directory_;
    MessageBus bus_;
};

} // namespace lumo::desktop
