#include "desktop/SampleApplication.h"

#include "desktop/PrivateDesktop.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace lumo::desktop {

namespace {

// One argument: fields separated by tabs, the title last.
std::string describe(const SampleWindow &window) {
    std::ostringstream text;
    text << window.area.x << '\t' << window.area.y << '\t' << window.area.width << '\t'
         << window.area.height << '\t' << window.colour << '\t'
         << (window.type.empty() ? "-" : window.type) << '\t'
         << (window.state.empty() ? "-" : window.state) << '\t' << window.overrideRedirect << '\t'
         << window.page << '\t' << window.transientFor << '\t' << window.title;
    return text.str();
}

} // namespace

SampleApplication::SampleApplication(PrivateDesktop &desktop, const std::string &className,
                                     const std::vector<SampleWindow> &windows)
    : desktop_(desktop)
    , process_(desktop.start({LUMO_SAMPLE_WINDOW, className})) {
    for (const SampleWindow &window : windows) {
        open(window);
    }
}

xcb_window_t SampleApplication::open(const SampleWindow &window) {
    process_->writeLine("open\t" + describe(window));
    noteOpenedWindow();
    return windows_.back();
}

void SampleApplication::noteOpenedWindow() {
    std::vector<xcb_window_t> opened;
    const auto hasOpened = [&] {
        opened.clear();
        for (const std::string &line : process_->outputLines()) {
            if (line.starts_with("window ")) {
                opened.push_back(static_cast<xcb_window_t>(std::stoul(line.substr(7))));
            }
        }
        return opened.size() > windows_.size() || !process_->isRunning();
    };
    DesktopSession &session = desktop_.session();
    const bool answered = session.eventually(hasOpened);
    if (!answered || opened.size() <= windows_.size() ||
        !session.eventually([&] { return session.isViewable(opened.back()); })) {
        throw std::runtime_error("a sample window did not open: " + process_->report());
    }
    windows_ = opened;
}

void SampleApplication::closeWindow(std::size_t index) {
    process_->writeLine("close\t" + std::to_string(index));
}

void SampleApplication::animate(std::size_t index, bool on) {
    process_->writeLine("animate\t" + std::to_string(index) + "\t" + (on ? "1" : "0"));
}

std::vector<SampleApplication::Click> SampleApplication::clicks() const {
    std::vector<Click> clicks;
    for (const std::string &line : process_->outputLines()) {
        std::istringstream fields(line);
        std::string kind;
        Click click;
        if (fields >> kind >> click.window >> click.spot.x >> click.spot.y >> click.button &&
            kind == "click") {
            clicks.push_back(click);
        }
    }
    return clicks;
}

} // namespace lumo::desktop
