#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/DesktopSession.h"
#include "desktop/MessageBus.h"
#include "desktop/TemporaryDirectory.h"

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace lumo::desktop {

enum class WindowManager {
    none,
    openbox,
    openboxSloppy, // the pointer focuses, and nothing raises
    fluxbox,
    xfwm4,
    xfwm4Compositing,
    kwin,
    kwinCompositing,
    mutter,
    muffin,
    enlightenment,
    metacity,
    i3,
    i3Floating,
    bspwm,
    herbstluftwm,
    spectrwm,
    icewm,
    awesome,
    jwm,
    marco,
    marcoCompositing,
    windowMaker,
    sawfish,
    twm, // knows nothing of hints
};
enum class Compositor { none, picomXrender, picomGlx, xcompmgr };

// Xvfb, or the server of real displays with a driver for none, whose outputs arrangeOutputs() uses.
enum class Server { xvfb, xorg };

// One output at work, counted from 0 to 2.
struct OutputUse {
    int output = 0;
    Area area;
    bool isPrimary = false;
};

struct DesktopOptions {
    int width = 1280;
    int height = 800;
    WindowManager windowManager = WindowManager::openbox;
    Compositor compositor = Compositor::none;
    std::vector<std::string> serverArguments = {}; // as {"-extension", "Composite"}
    Server server = Server::xvfb;
    int depth = 24;                      // of the root window, bits per pixel
    std::vector<OutputUse> outputs = {}; // of Server::xorg; one for all when empty
};

// A desktop that nobody else sees: an X server without a screen on a free display number, with a
// window manager and a compositing manager as wanted, in a fresh home directory, at 96 pixels per
// inch. Making it returns when all of them are at work and throws, with what they said, when they
// do not get there. Whatever was started on it, their descendants included, ends with it.
class PrivateDesktop {
  public:
    explicit PrivateDesktop(const DesktopOptions &options = {});
    ~PrivateDesktop();
    PrivateDesktop(const PrivateDesktop &) = delete;
    PrivateDesktop &operator=(const PrivateDesktop &) = delete;

    // As ":57".
    const std::string &displayName() const { return displayName_; }

    // The tester's own connection to it.
    DesktopSession &session() { return *session_; }

    // What programs on this desktop are told: the display, the directories below, no message bus.
    const Environment &environment() const { return environment_; }
    const std::filesystem::path &directory() const { return directory_.path(); }
    std::filesystem::path configDirectory() const { return directory() / "config"; }

    // Starts a program on this desktop, with these variables beside those of the desktop or instead
    // of them. It ends with the returned object, or with the desktop.
    std::unique_ptr<ChildProcess> start(const std::vector<std::string> &command,
                                        const Environment &variables = {}) const;

    // Starts a window manager, replacing one that runs, or kills the one that was started last, and
    // returns when that is done.
    void startWindowManager(WindowManager windowManager);
    void killWindowManager();

    // Starts a compositing manager, or stops the running one, and returns when that is done.
    void startCompositor(Compositor compositor);
    void stopCompositor();

    // Gives the programs that are started from now on a session bus, which starts these services
    // when they are called.
    void startSessionBus(MessageBus::Services services = MessageBus::Services::none);
    void stopSessionBus() { messageBus_.reset(); }

    // Makes, changes or removes a monitor. One that takes the server's only output replaces the one
    // that is there by itself. No RandR event tells of these changes.
    void setMonitor(const std::string &name, const Area &area, bool withOutput);
    void removeMonitor(const std::string &name);

    // Puts these outputs of a Server::xorg to work and no others, as display settings do. The
    // server tells everybody of each step.
    void arrangeOutputs(const std::vector<OutputUse> &uses);

    ChildProcess &server() { return *server_; }

    // Kills the X server under everybody's feet.
    void killServer();

  private:
    void startServer(const DesktopOptions &options);
    std::vector<std::string> xorgCommand(const DesktopOptions &options) const;
    std::vector<std::string> prepareWindowManager(WindowManager windowManager);
    void writeFile(const std::filesystem::path &inDirectory, const std::string &text) const;
    void writeScript(const std::filesystem::path &inDirectory, const std::string &text) const;
    void adjustMonitors(const std::vector<std::string> &arguments) const;
    void killDescendants();

    TemporaryDirectory directory_;
    Environment environment_;
    std::string displayName_;
    std::set<std::string> monitors_;
    std::set<std::string> modes_; // by name, and each after an output that has it
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<DesktopSession> session_;
    std::unique_ptr<MessageBus> messageBus_;
    std::unique_ptr<MessageBus> managersBus_;
    std::unique_ptr<ChildProcess> windowManager_;
    std::unique_ptr<ChildProcess> compositor_;
};

} // namespace lumo::desktop
