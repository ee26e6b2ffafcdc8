#include "desktop/PrivateDesktop.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace lumo::desktop {

namespace fs = std::filesystem;

namespace {

// Every program on a desktop carries this variable, so that what it started can be found.
constexpr const char *markerVariable = "LUMO_PRIVATE_DESKTOP";

Environment cleanEnvironment(const fs::path &directory) {
    Environment environment = {
        {"PATH", "/usr/local/bin:/usr/bin:/bin"},
        {"LANG", "C.UTF-8"},
        {"HOME", (directory / "home").string()},
        {"XDG_CONFIG_HOME", (directory / "config").string()},
        {"XDG_DATA_HOME", (directory / "data").string()},
        {"XDG_CACHE_HOME", (directory / "cache").string()},
        {"XDG_STATE_HOME", (directory / "state").string()},
        {"XDG_RUNTIME_DIR", (directory / "run").string()},
        {"TMPDIR", (directory / "tmp").string()},
        {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (directory / "run" / "no-bus").string()},
        {"NO_AT_BRIDGE", "1"},
        {"LIBGL_ALWAYS_SOFTWARE", "1"},
        {markerVariable, directory.string()},
    };
    for (const auto &[name, value] : inheritedEnvironment()) {
        environment[name] = value;
    }
    for (const char *folder :
         {"home", "config", "data", "cache", "state", "run", "tmp", "output"}) {
        fs::create_directory(directory / folder);
    }
    fs::permissions(directory / "run", fs::perms::owner_all);
    return environment;
}

bool carries(const fs::path &process, const std::string &marker) {
    std::ifstream stream(process / "environ", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    return ('\0' + text).find('\0' + marker + '\0') != std::string::npos;
}

std::vector<std::string> xvfbCommand(const DesktopOptions &options) {
    return {"Xvfb", "-screen", "0",
            std::to_string(options.width) + "x" + std::to_string(options.height) + "x" +
                std::to_string(options.depth)};
}

} // namespace

PrivateDesktop::PrivateDesktop(const DesktopOptions &options)
    : environment_(cleanEnvironment(directory_.path())) {
    try {
        startServer(options);
        startWindowManager(options.windowManager);
        if (options.windowManager == WindowManager::muffin) {
            arrangeOutputs(options.outputs); // it has a mode of its own choice
        }
        startCompositor(options.compositor);
    } catch (...) {
        killDescendants();
        throw;
    }
}

PrivateDesktop::~PrivateDesktop() {
    killDescendants();
}

std::unique_ptr<ChildProcess> PrivateDesktop::start(const std::vector<std::string> &command,
                                                    const Environment &variables) const {
    Environment all = variables;
    all.insert(environment_.begin(), environment_.end());
    return std::make_unique<ChildProcess>(command, all, directory() / "output");
}

void PrivateDesktop::startServer(const DesktopOptions &options) {
    auto command = options.server == Server::xvfb ? xvfbCommand(options) : xorgCommand(options);
    command.insert(command.end(), {"-displayfd", "1", "-dpi", "96", "-noreset", "-nolisten", "tcp",
                                   "+extension", "RANDR", "+extension", "Composite"});
    command.insert(command.end(), options.serverArguments.begin(), options.serverArguments.end());
    server_ = start(command);
    waitUntil([&] { return !server_->outputLines().empty(); }, *server_, "the X server");
    displayName_ = ":" + server_->outputLines().front();
    environment_["DISPLAY"] = displayName_;
    session_ = std::make_unique<DesktopSession>(displayName_);
    if (!options.outputs.empty()) {
        arrangeOutputs(options.outputs);
    }
}

// It needs no privilege: it opens no device and leaves the terminal alone.
std::vector<std::string> PrivateDesktop::xorgCommand(const DesktopOptions &options) const {
    const fs::path configuration = directory() / "xorg.conf";
    std::ofstream(configuration) << "Section \"ServerFlags\"\n"
                                    "  Option \"AutoAddDevices\" \"false\"\n"
                                    "  Option \"AutoAddGPU\" \"false\"\n"
                                    "EndSection\n"
                                    "Section \"Device\"\n"
                                    "  Identifier \"none\"\n"
                                    "  Driver \"dummy\"\n"
                                    "  VideoRam 256000\n"
                                    "EndSection\n"
                                    "Section \"Screen\"\n"
                                    "  Identifier \"screen\"\n"
                                    "  Device \"none\"\n"
                                    "  DefaultDepth "
                                 << options.depth << "\n  SubSection \"Display\"\n    Depth "
                                 << options.depth << "\n    Virtual " << options.width << " "
                                 << options.height << "\n  EndSubSection\nEndSection\n";
    // Debian's start script in the path lets only people at a console through.
    const std::string itself = "/usr/lib/xorg/Xorg";
    return {fs::exists(itself) ? itself : "Xorg",
            "-config",
            configuration.string(),
            "-logfile",
            (directory() / "output" / "Xorg.log").string(),
            "-novtswitch",
            "-sharevts"};
}

void PrivateDesktop::startSessionBus(MessageBus::Services services) {
    messageBus_ = std::make_unique<MessageBus>(environment_, services);
    environment_["DBUS_SESSION_BUS_ADDRESS"] = messageBus_->address();
}

void PrivateDesktop::writeFile(const fs::path &inDirectory, const std::string &text) const {
    const fs::path file = directory() / inDirectory;
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

void PrivateDesktop::writeScript(const fs::path &inDirectory, const std::string &text) const {
    writeFile(inDirectory, "#!/bin/sh\n" + text);
    fs::permissions(directory() / inDirectory, fs::perms::owner_all);
}

// The command that starts it, told to replace another one where it would not do so by itself.
std::vector<std::string> PrivateDesktop::prepareWindowManager(WindowManager windowManager) {
    switch (windowManager) {
    case WindowManager::none:
        return {};
    case WindowManager::openbox:
        return {"openbox", "--replace"};
    case WindowManager::openboxSloppy:
        writeFile("config/openbox/rc.xml",
                  "<openbox_config xmlns=\"http://openbox.org/3.4/rc\"><focus>"
                  "<followMouse>yes</followMouse><focusDelay>0</focusDelay>"
                  "<raiseOnFocus>no</raiseOnFocus></focus></openbox_config>");
        return {"openbox", "--replace"};
    case WindowManager::fluxbox:
        // Its style would paint the root window some time after the manager has started.
        writeFile("home/.fluxbox/overlay", "background: none\n");
        return {"fluxbox", "-no-slit", "-no-toolbar"};
    case WindowManager::xfwm4:
        return {"xfwm4", "--replace", "--compositor=off"};
    case WindowManager::xfwm4Compositing:
        return {"xfwm4", "--replace", "--compositor=on"};
    case WindowManager::kwin:
    case WindowManager::kwinCompositing:
        writeFile("config/kwinrc", std::string("[Compositing]\nEnabled=") +
                                       (windowManager == WindowManager::kwin ? "false" : "true") +
                                       "\n[Desktops]\nNumber=2\n");
        return {"kwin_x11", "--replace"};
    case WindowManager::mutter:
        return {"mutter", "--x11", "--replace", "--sm-disable"};
    case WindowManager::muffin:
        return {"muffin", "--replace", "--sm-disable"};
    case WindowManager::enlightenment:
        return {"enlightenment_start", "-profile", "standard"};
    case WindowManager::metacity:
        return {"metacity", "--replace", "--sm-disable", "--no-composite"};
    case WindowManager::i3:
    case WindowManager::i3Floating:
        writeFile(
            "config/i3/config",
            std::string("# i3 config file (v4)\nfont pango:monospace 8\n"
                        "bindsym Mod1+Tab focus next\n") +
                (windowManager == WindowManager::i3 ? "" : "for_window [all] floating enable\n"));
        return {"i3", "--replace", "-c", (configDirectory() / "i3" / "config").string()};
    case WindowManager::bspwm:
        writeScript("config/bspwm/bspwmrc", "for monitor in $(bspc query -M --names)\n"
                                            "do bspc monitor $monitor -d desktop-of-$monitor\n"
                                            "done\n");
        return {"bspwm"};
    case WindowManager::herbstluftwm:
        // A tag for each monitor, which is gone to where it shows.
        writeScript("config/herbstluftwm/autostart", "herbstclient add second\n"
                                                     "herbstclient detect_monitors\n"
                                                     "herbstclient set swap_monitors_to_get_tag 0\n"
                                                     "herbstclient keybind Mod1-Tab cycle_all\n"
                                                     "herbstclient unlock\n");
        return {"herbstluftwm"};
    case WindowManager::spectrwm:
        writeFile("config/spectrwm/spectrwm.conf",
                  "bar_enabled = 0\nmodkey = Mod1\nfocus_mode = manual\n");
        return {"spectrwm"};
    case WindowManager::icewm:
        writeFile("home/.icewm/preferences", "ShowTaskBar=0\nTaskBarAutoHide=0\n");
        return {"icewm", "--replace"};
    case WindowManager::awesome:
        return {"awesome", "--replace"};
    case WindowManager::jwm:
        writeFile("home/.jwmrc",
                  "<?xml version=\"1.0\"?><JWM><FocusModel>click</FocusModel>"
                  "<Key mask=\"A\" key=\"Tab\">nextstacked</Key><Desktops width=\"2\"/></JWM>");
        return {"jwm"};
    case WindowManager::marco:
        return {"marco", "--replace", "--sm-disable", "--no-composite"};
    case WindowManager::marcoCompositing:
        return {"marco", "--replace", "--sm-disable", "--composite"};
    case WindowManager::windowMaker:
        return {"wmaker", "--no-dock", "--no-clip", "--no-drawer"};
    case WindowManager::sawfish:
        return {"sawfish", "--replace"};
    case WindowManager::twm:
        writeFile("home/.twmrc", "UsePPosition \"on\"\nRandomPlacement\nNoGrabServer\n");
        return {"twm"};
    }
    return {};
}

void PrivateDesktop::startWindowManager(WindowManager windowManager) {
    if (windowManager == WindowManager::none) {
        return;
    }
    const auto before = session_->windowManagerWindow();
    const auto command = prepareWindowManager(windowManager);
    // Some reach their settings over a message bus. No other program is told of it.
    Environment variables = {{"GSETTINGS_BACKEND", "memory"}};
    if (!managersBus_) {
        auto all = environment_;
        all.merge(Environment(variables));
        managersBus_ = std::make_unique<MessageBus>(all, MessageBus::Services::ofTheSystem);
    }
    variables["DBUS_SESSION_BUS_ADDRESS"] = managersBus_->address();
    const auto replaced = std::exchange(windowManager_, start(command, variables));

    waitUntil(
        [&] {
            return windowManager == WindowManager::twm
                       ? session_->hasWindowManager()
                       : session_->windowManagerWindow() != before &&
                             session_->windowManagerName().has_value();
        },
        *windowManager_, "the window manager");
    // Some announce themselves a little before they listen, and never see what opens in between.
    waitUntil([&] { return session_->windowManagerTakesWindows(); }, *windowManager_,
              "the window manager's care for windows");
    if (windowManager == WindowManager::xfwm4Compositing ||
        windowManager == WindowManager::kwinCompositing || windowManager == WindowManager::mutter ||
        windowManager == WindowManager::muffin || windowManager == WindowManager::enlightenment ||
        windowManager == WindowManager::marcoCompositing) {
        waitUntil([&] { return session_->selectionOwner("_NET_WM_CM_S0") != XCB_NONE; },
                  *windowManager_, "the window manager's compositor");
    }
}

void PrivateDesktop::killWindowManager() {
    windowManager_.reset();
    session_->eventually([&] { return !session_->windowManagerName(); });
}

void PrivateDesktop::startCompositor(Compositor compositor) {
    if (compositor == Compositor::none) {
        return;
    }
    const char *backend = compositor == Compositor::picomGlx ? "glx" : "xrender";
    compositor_ = start(
        compositor == Compositor::xcompmgr
            ? std::vector<std::string>{"xcompmgr"}
            : std::vector<std::string>{"picom", "--config", "/dev/null", "--backend", backend});
    waitUntil([&] { return session_->selectionOwner("_NET_WM_CM_S0") != XCB_NONE; }, *compositor_,
              "the compositing manager");
}

void PrivateDesktop::stopCompositor() {
    compositor_.reset();
    session_->eventually([&] { return session_->selectionOwner("_NET_WM_CM_S0") == XCB_NONE; });
}

void PrivateDesktop::setMonitor(const std::string &name, const Area &area, bool withOutput) {
    if (monitors_.contains(name)) {
        removeMonitor(name); // the server takes a name only once
    }
    monitors_.insert(name);
    // Pixels and, at 96 to the inch, millimetres.
    const auto length = [](int pixels) {
        return std::to_string(pixels) + "/" + std::to_string(pixels * 254 / 960);
    };
    adjustMonitors({"--setmonitor", name,
                    length(area.width) + "x" + length(area.height) + "+" + std::to_string(area.x) +
                        "+" + std::to_string(area.y),
                    withOutput ? "screen" : "none"});
}

void PrivateDesktop::arrangeOutputs(const std::vector<OutputUse> &uses) {
    constexpr int outputs = 3;
    std::vector<std::string> arguments;
    if (std::ranges::none_of(uses, &OutputUse::isPrimary)) {
        arguments.emplace_back("--noprimary");
    }
    for (int output = 0; output < outputs; ++output) {
        const auto name = "DUMMY" + std::to_string(output);
        arguments.insert(arguments.end(), {"--output", name});
        const auto use = std::ranges::find(uses, output, &OutputUse::output);
        if (use == uses.end()) {
            arguments.emplace_back("--off");
            continue;
        }
        const auto &area = use->area;
        const auto mode =
            std::to_string(area.width) + "x" + std::to_string(area.height) + "-wished";
        if (modes_.insert(mode).second) {
            const auto end = [](int pixels, int blank) { return std::to_string(pixels + blank); };
            adjustMonitors({"--newmode", mode, "50", end(area.width, 0), end(area.width, 8),
                            end(area.width, 16), end(area.width, 24), end(area.height, 0),
                            end(area.height, 1), end(area.height, 2), end(area.height, 3)});
        }
        if (modes_.insert(name + mode).second) {
            adjustMonitors({"--addmode", name, mode});
        }
        arguments.insert(arguments.end(), {"--mode", mode, "--pos",
                                           std::to_string(area.x) + "x" + std::to_string(area.y)});
        if (use->isPrimary) {
            arguments.emplace_back("--primary");
        }
    }
    adjustMonitors(arguments);
}

void PrivateDesktop::removeMonitor(const std::string &name) {
    monitors_.erase(name);
    adjustMonitors({"--delmonitor", name});
}

void PrivateDesktop::adjustMonitors(const std::vector<std::string> &arguments) const {
    std::vector<std::string> command = {"xrandr"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const auto tool = start(command);
    if (tool->waitForExit(Seconds(30)) != 0) {
        throw std::runtime_error("the monitors cannot be changed: " + tool->report());
    }
}

void PrivateDesktop::killServer() {
    server_->kill();
}

void PrivateDesktop::killDescendants() {
    // The X server last: programs that lose it complain.
    compositor_.reset();
    windowManager_.reset();
    messageBus_.reset();
    managersBus_.reset();
    session_.reset();
    server_.reset();
    const std::string marker = std::string(markerVariable) + "=" + directory().string();
    for (bool found = true; found;) {
        found = false;
        for (const fs::directory_entry &process : fs::directory_iterator("/proc")) {
            const std::string name = process.path().filename().string();
            const long pid = std::strtol(name.c_str(), nullptr, 10);
            if (pid > 0 && pid != getpid() && carries(process.path(), marker)) {
                ::kill(static_cast<pid_t>(pid), SIGKILL);
                found = true;
            }
        }
        if (found) {
            pauseBriefly();
        }
    }
}

} // namespace lumo::desktop
