#include "wayland/PrivateSway.h"

#include <fstream>
#include <stdexcept>

namespace lumo::desktop {

namespace fs = std::filesystem;

namespace {

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
    const Environment more = {{"SWAYSOCK", path("sway.sock").string()},
                              {"WLR_BACKENDS", "headless"},
                              {"WLR_LIBINPUT_NO_DEVICES", "1"},
                              {"WLR_RENDERER", "pixman"},
                              {"WLR_HEADLESS_OUTPUTS", std::to_string(options.outputs)}};
    environment_.insert(more.begin(), more.end());
    std::ofstream(path("sway.conf")) << "xwayland " << (options.hasXwayland ? "enable" : "disable")
                                     << "\ndefault_border none\nfocus_follows_mouse no\n"
                                        "floating_modifier Mod4\nseat * hide_cursor 100\n"
                                     << options.configuration << '\n';
    own();
    sway_ = start({"sway", "--config", path("sway.conf").string()});
    const auto display = path("run") / "wayland-1";
    waitUntil([&] { return fs::exists(display) && fs::exists(path("sway.sock")); }, *sway_, "sway");
    environment_["WAYLAND_DISPLAY"] = "wayland-1";
    if (options.hasXwayland) {
        const auto file = path("pictures") / "display";
        command("exec echo $DISPLAY > " + file.string());
        std::string name;
        waitUntil([&] { return !!(std::ifstream(file) >> name); }, *sway_, "Xwayland");
        environment_["DISPLAY"] = name;
    }
}

PrivateSway::~PrivateSway() = default;

WaylandHands &PrivateSway::hands() {
    if (!hands_) {
        hands_ = std::make_unique<WaylandHands>((path("run") / "wayland-1").string());
    }
    return *hands_;
}

std::unique_ptr<ChildProcess> PrivateSway::startSample(const std::string &name,
                                                       const std::string &colour, int width,
                                                       int height) const {
    auto sample = startSurface(name, colour, width, height);
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
    const auto file = path("pictures") / "shown.ppm";
    const auto shot = start({"grim", "-t", "ppm", "-o", output, file.string()});
    if (shot->waitForExit() != 0) {
        throw std::runtime_error("no picture of " + output + ": " + shot->report());
    }
    return readPixels(file);
}

} // namespace lumo::desktop
