#include "wayland/PrivateSway.h"

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace lumo::desktop {

namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

bool isRoot() {
    return geteuid() == 0;
}

// Pixels in the plain form of netpbm's.
Picture readPixels(const fs::path &file) {
    std::ifstream stream(file, std::ios::binary);
    std::string magic;
    int width = 0;
    int height = 0;
    int largest = 0;
    stream >> magic >> width >> height >> largest;
    stream.get();
    if (magic != "P6" || !stream) {
        throw std::runtime_error("there is no picture in " + file.string());
    }
    return {width, height, [&](int, int) {
                char bytes[3] = {};
                stream.read(bytes, sizeof bytes);
                return Colour{static_cast<std::uint8_t>(bytes[0]),
                              static_cast<std::uint8_t>(bytes[1]),
                              static_cast<std::uint8_t>(bytes[2])};
            }};
}

} // namespace

PrivateSway::PrivateSway(const SwayOptions &options) {
    const auto folder = [this](const char *name) { return (directory_.path() / name).string(); };
    environment_ = {{"PATH", "/usr/local/bin:/usr/bin:/bin"},
                    {"HOME", folder("home")},
                    {"XDG_CONFIG_HOME", folder("config")},
                    {"XDG_RUNTIME_DIR", folder("run")},
                    {"DBUS_SESSION_BUS_ADDRESS", bus_.address()},
                    {"SWAYSOCK", folder("sway.sock")},
                    {"WLR_BACKENDS", "headless"},
                    {"WLR_LIBINPUT_NO_DEVICES", "1"},
                    {"WLR_RENDERER", "pixman"},
                    {"WLR_HEADLESS_OUTPUTS", std::to_string(options.outputs)}};
    for (const auto *name : {"home", "config", "run", "bin", "pictures"}) {
        fs::create_directory(folder(name));
    }
    fs::permissions(folder("run"), fs::perms::owner_all);
    std::ofstream(folder("sway.conf"))
        << "xwayland " << (options.hasXwayland ? "enable" : "disable")
        << "\ndefault_border none\nfocus_follows_mouse no\n"
           "floating_modifier Mod4\nseat * hide_cursor 100\n"
        << options.configuration << '\n';
    own();
    sway_ = start({"sway", "--config", folder("sway.conf")});
    const auto display = fs::path(folder("run")) / "wayland-1";
    waitUntil([&] { return fs::exists(display) && fs::exists(folder("sway.sock")); }, *sway_,
              "sway");
    environment_["WAYLAND_DISPLAY"] = "wayland-1";
    if (options.hasXwayland) {
        environment_["DISPLAY"] = ":0";
    }
    hands_ = std::make_unique<WaylandHands>(display.string());
}

PrivateSway::~PrivateSway() = default;

// Gives all there is to the user that programs run as.
void PrivateSway::own() const {
    if (!isRoot()) {
        return;
    }
    std::vector<fs::path> all = {directory_.path()};
    std::copy(fs::recursive_directory_iterator(directory_.path()), {}, std::back_inserter(all));
    for (const auto &path : all) {
        if (chown(path.c_str(), nobody, nobody) != 0) {
            throw std::runtime_error("the owner of " + path.string() + " can't be changed");
        }
    }
}

std::vector<std::string> PrivateSway::asUser(std::vector<std::string> command) const {
    if (isRoot()) {
        const auto user = std::to_string(nobody);
        const std::vector<std::string> change = {"setpriv", "--reuid", user,
                                                 "--regid", user,      "--clear-groups"};
        command.insert(command.begin(), change.begin(), change.end());
    }
    return command;
}

// Where the user may run it: others than the tester may not see where it was built.
fs::path PrivateSway::runnable(const fs::path &program) const {
    const auto copy = directory_.path() / "bin" / program.filename();
    if (!isRoot()) {
        return program;
    }
    if (!fs::exists(copy)) {
        fs::copy_file(program, copy);
        fs::permissions(copy, fs::perms::others_read | fs::perms::others_exec,
                        fs::perm_options::add);
    }
    return copy;
}

std::unique_ptr<ChildProcess> PrivateSway::start(std::vector<std::string> command,
                                                 const Environment &variables) const {
    auto environment = environment_;
    for (const auto &[name, value] : variables) {
        environment[name] = value;
    }
    return std::make_unique<ChildProcess>(asUser(std::move(command)), environment,
                                          directory_.path());
}

std::unique_ptr<ChildProcess> PrivateSway::startLumo(const Preferences &preferences,
                                                     const Environment &variables) const {
    writePreferences(directory_.path() / "config" / "lumo" / "app.lumo.Lumo.plist", preferences);
    own();
    return start({runnable(LUMO_EXECUTABLE).string()}, variables);
}

std::unique_ptr<ChildProcess> PrivateSway::startSample(const std::string &name,
                                                       const std::string &colour, int width,
                                                       int height) const {
    auto sample = start({runnable(LUMO_SAMPLE_SURFACE).string(), name, name, colour,
                         std::to_string(width), std::to_string(height)});
    const auto mark = "\"app_id\": \"" + name + '"';
    waitUntil([&] { return ask("get_tree").find(mark) != std::string::npos; }, *sample, name);
    return sample;
}

bool PrivateSway::command(const std::string &text) const {
    return start({"swaymsg", "--", text})->waitForExit() == 0;
}

std::string PrivateSway::ask(const std::string &question) const {
    const auto answer = start({"swaymsg", "--raw", "--type", question});
    answer->waitForExit();
    std::string all;
    for (const auto &line : answer->outputLines()) {
        all += line + '\n';
    }
    return all;
}

Picture PrivateSway::picture(const std::string &output) const {
    const auto file = directory_.path() / "pictures" / "shown.ppm";
    const auto shot = start({"grim", "-t", "ppm", "-o", output, file.string()});
    if (shot->waitForExit() != 0) {
        throw std::runtime_error("no picture of " + output + ": " + shot->report());
    }
    return readPixels(file);
}

} // namespace lumo::desktop
