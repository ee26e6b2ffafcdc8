#include "wayland/WaylandUser.h"

#include "desktop/ProgramUnderTest.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace lumo::desktop {

namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

bool isRoot() {
    return geteuid() == 0;
}

std::vector<std::string> asUser(std::vector<std::string> command) {
    if (isRoot()) {
        const auto user = std::to_string(nobody);
        const std::vector<std::string> change = {"setpriv", "--reuid", user,
                                                 "--regid", user,      "--clear-groups"};
        command.insert(command.begin(), change.begin(), change.end());
    }
    return command;
}

} // namespace

WaylandUser::WaylandUser() {
    environment_ = {
        {"PATH", "/usr/local/bin:/usr/bin:/bin"},     {"HOME", path("home").string()},
        {"XDG_CONFIG_HOME", path("config").string()}, {"XDG_DATA_HOME", path("data").string()},
        {"XDG_RUNTIME_DIR", path("run").string()},    {"DBUS_SESSION_BUS_ADDRESS", bus_.address()}};
    for (const auto &[name, value] : inheritedEnvironment()) {
        environment_[name] = value;
    }
    for (const auto *name : {"home", "config", "data", "run", "bin", "pictures"}) {
        fs::create_directory(path(name));
    }
    fs::permissions(path("run"), fs::perms::owner_all);
}

void WaylandUser::become() {
    if (isRoot() &&
        (setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0)) {
        _exit(1);
    }
}

void WaylandUser::own() const {
    if (!isRoot()) {
        return;
    }
    std::vector<fs::path> all = {directory_.path()};
    std::copy(fs::recursive_directory_iterator(directory_.path()), {}, std::back_inserter(all));
    for (const auto &each : all) {
        if (lchown(each.c_str(), nobody, nobody) != 0 && fs::exists(each)) {
            throw std::runtime_error("the owner of " + each.string() + " can't be changed");
        }
    }
}

fs::path WaylandUser::runnable(const fs::path &program) const {
    const auto copy = path("bin") / program.filename();
    if (!fs::exists(copy)) {
        fs::copy_file(program, copy);
        fs::permissions(copy, fs::perms::others_read | fs::perms::others_exec,
                        fs::perm_options::add);
    }
    return copy;
}

std::unique_ptr<ChildProcess> WaylandUser::start(std::vector<std::string> command,
                                                 const Environment &variables) const {
    auto environment = environment_;
    for (const auto &[name, value] : variables) {
        environment[name] = value;
    }
    return std::make_unique<ChildProcess>(asUser(std::move(command)), environment,
                                          directory_.path());
}

std::unique_ptr<ChildProcess> WaylandUser::startLumo(const Preferences &preferences,
                                                     const Environment &variables) const {
    writePreferences(path("config") / "lumo" / "app.lumo.Lumo.plist", preferences);
    own();
    return start({runnable(programUnderTest()).string()}, variables);
}

std::unique_ptr<ChildProcess> WaylandUser::startSurface(const std::string &name,
                                                        const std::string &colour, int width,
                                                        int height) const {
    return start({runnable(LUMO_SAMPLE_SURFACE).string(), name, name, colour, std::to_string(width),
                  std::to_string(height)});
}

std::unique_ptr<ChildProcess> WaylandUser::startXSample(const std::string &name) const {
    return start({runnable(LUMO_SAMPLE_WINDOW).string(), name});
}

} // namespace lumo::desktop
