#include "desktop/ShellDesktop.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace lumo::desktop {

namespace {

const std::string dotTitle = "Lumo - Focus and privacy";

} // namespace

ShellDesktop::ShellDesktop(const DesktopOptions &options)
    : desktop(options) {
    desktop.startSessionBus();
    panel = desktop.start({"tint2"});
}

void ShellDesktop::start(Preferences preferences) {
    preferences["hasCompletedOnboarding"] = true;
    lumo = std::make_unique<LumoProcess>(desktop, preferences);
    dot();
}

std::vector<xcb_window_t> ShellDesktop::windowsTitled(const std::string &title) {
    std::vector<xcb_window_t> found;
    std::vector<xcb_window_t> left{session.root()};
    while (!left.empty()) {
        const auto window = left.back();
        left.pop_back();
        if (session.titleOf(window) == title && !session.classOf(window).empty() &&
            session.isViewable(window)) {
            found.push_back(window);
        }
        for (const auto child : session.childrenOf(window)) {
            left.push_back(child);
        }
    }
    return found;
}

std::optional<xcb_window_t> ShellDesktop::appears(const std::string &title) {
    std::vector<xcb_window_t> found;
    session.eventually([&] { return (found = windowsTitled(title)).size() == 1; });
    return found.size() == 1 ? std::optional(found.front()) : std::nullopt;
}

bool ShellDesktop::disappears(const std::string &title) {
    return session.eventually([&] { return windowsTitled(title).empty(); });
}

Spot ShellDesktop::dot() {
    const auto icon = appears(dotTitle);
    if (!icon) {
        throw std::runtime_error("no dot: " + lumo->process().report() + panel->report());
    }
    const auto area = session.areaOf(*icon);
    return {area.x + area.width / 2, area.y + area.height / 2};
}

std::optional<Area> ShellDesktop::popover() {
    for (const auto window : session.stacking()) {
        if (session.isOverrideRedirect(window) && session.isViewable(window) &&
            session.titleOf(window) == "Lumo Menu" &&
            session.numbers(window, "_NET_WM_BYPASS_COMPOSITOR").empty()) { // no overlay
            return session.areaOf(window);
        }
    }
    return std::nullopt;
}

bool ShellDesktop::openPopover() {
    // The panel may still be about to move the dot.
    const auto click = [&] {
        session.click(dot(), 3);
        return session.eventually([&] { return isPopoverShown(); }, Seconds(3));
    };
    return session.eventually(click) &&
           session.eventually([&] { return session.isKeyboardGrabbed(); }) &&
           session.eventually([&] { return !session.isPointerGrabbed(); });
}

bool ShellDesktop::popoverCloses() {
    return session.eventually([&] { return !isPopoverShown(); });
}

void ShellDesktop::chooseRow(int row) {
    for (int step = 0; step <= row; ++step) {
        session.press({Key::down});
    }
    session.press({Key::enter});
}

std::optional<xcb_window_t> ShellDesktop::openSettings() {
    LumoProcess second(desktop);
    second.process().waitForExit();
    const auto settings = appears("Lumo Settings");
    const bool isInFront =
        settings && session.eventually([&] { return session.activeWindow() == *settings; });
    return isInFront ? settings : std::nullopt;
}

std::string ShellDesktop::stored(const std::string &key) {
    std::ifstream file(preferencesFile(desktop));
    std::string all(std::istreambuf_iterator<char>(file), {});
    std::erase_if(all, [](char letter) { return letter == '\n' || letter == '\t'; });
    const std::string head = "<key>" + key + "</key>";
    const auto found = all.find(head);
    if (found == std::string::npos) {
        return {};
    }
    const auto value = found + head.size();
    return all.substr(value,
                      std::min(all.find("<key>", value), all.find("</dict>", value)) - value);
}

bool ShellDesktop::isStored(const std::string &key, const std::string &value) {
    return session.eventually([&] { return stored(key) == value; });
}

} // namespace lumo::desktop
