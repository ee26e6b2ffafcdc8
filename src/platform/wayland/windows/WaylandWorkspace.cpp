#include "platform/wayland/windows/WaylandWorkspace.h"

#include "platform/wayland/windows/WindowSource.h"

#include <algorithm>
#include <utility>

namespace lumo::wayland {

namespace {

using Presence = DesktopWindow::Presence;

} // namespace

WaylandWorkspace::WaylandWorkspace(WindowSource &source, const Log &log)
    : source_(source)
    , settingsOpener_(log) {
    announce();
    changes_ = {source.onChange([this] {
                    isStale_ = true;
                    announce();
                }),
                applications_.onChange([this] { isStale_ = true; })};
}

const RunningApplication *WaylandWorkspace::frontmostApplication() const {
    const auto *focused = source_.state().focused();
    return focused != nullptr ? runningApplication(focused->process) : nullptr;
}

const std::vector<RunningApplication> &WaylandWorkspace::runningApplications() const {
    refresh();
    return running_;
}

const RunningApplication *
WaylandWorkspace::runningApplication(std::int32_t processIdentifier) const {
    refresh();
    return freedesktop::applicationOf(processIdentifier, running_);
}

Handle WaylandWorkspace::onDidActivateApplication(std::function<void()> observer) {
    return activated_.subscribe(std::move(observer));
}

Handle WaylandWorkspace::onDidTerminateApplication(std::function<void()> observer) {
    return terminated_.subscribe(std::move(observer));
}

Handle WaylandWorkspace::onActiveSpaceDidChange(std::function<void()> observer) {
    return spaceChanged_.subscribe(std::move(observer));
}

void WaylandWorkspace::refresh() const {
    if (!std::exchange(isStale_, false)) {
        return;
    }
    // A window in task bars tells more about its application than another one does.
    std::map<std::int32_t, const DesktopWindow *> best;
    for (const auto &window : source_.state().windows) {
        auto &known = best[window.process];
        if (known == nullptr || (window.isInTaskbars && !known->isInTaskbars)) {
            known = &window;
        }
    }
    running_.clear();
    for (const auto &[process, window] : best) {
        running_.push_back(applications_.identify(
            process, {window->application, window->application}, window->isInTaskbars));
    }
    applications_.keepOnly(running_);
}

void WaylandWorkspace::announce() {
    std::vector<std::int32_t> processes;
    for (const auto &application : runningApplications()) {
        processes.push_back(application.processIdentifier);
    }
    const auto &state = source_.state();
    const auto *focused = state.focused();
    const auto focus = focused != nullptr ? std::optional(focused->identifier) : std::nullopt;
    const auto before = std::exchange(announcedProcesses_, std::move(processes));
    const bool hasTerminated = !std::ranges::includes(announcedProcesses_, before);
    const bool hasSwitched = std::exchange(announcedSpaces_, state.shownSpaces) != announcedSpaces_;
    const bool hasActivated = std::exchange(announcedFocus_, focus) != focus;
    if (hasTerminated) {
        terminated_.emit();
    }
    if (hasSwitched) {
        spaceChanged_.emit();
    }
    if (hasActivated) {
        activated_.emit();
    }
}

std::vector<InstalledApplication> WaylandWorkspace::installedApplications() const {
    return applications_.installed();
}

bool WaylandWorkspace::activate(std::int32_t processIdentifier, HiddenApplication ifHidden) {
    // Of the application's windows those that are shown, else one that could be.
    std::vector<const DesktopWindow *> shown;
    const DesktopWindow *hidden = nullptr;
    bool isOnTop = true; // no other application's ordinary window lies above one of them
    for (const auto &window : source_.state().windows) {
        const bool isShown = window.presence == Presence::shown;
        if (window.layer == DesktopWindow::Layer::dock) {
            continue;
        }
        if (window.process != processIdentifier) {
            isOnTop &= !isShown || window.layer != DesktopWindow::Layer::ordinary || shown.empty();
        } else if (isShown) {
            shown.push_back(&window);
        } else {
            hidden = &window;
        }
    }
    const auto *front = shown.empty() ? hidden : shown.back();
    if (front == nullptr || (front == hidden && ifHidden == HiddenApplication::leave)) {
        return false;
    }
    const auto *focused = source_.state().focused();
    const bool isActive = focused != nullptr && focused->process == processIdentifier;
    if (isActive && (isOnTop || !source_.focusRaises())) {
        return true;
    }
    const auto target = front->identifier; // what is asked for may change the state
    if (source_.focusRaises() && !isOnTop) {
        std::vector<std::uint32_t> others;
        for (const auto *window : shown) {
            if (window != front) {
                others.push_back(window->identifier);
            }
        }
        for (const auto other : others) {
            source_.raise(other);
        }
    }
    source_.activate(target);
    return true;
}

} // namespace lumo::wayland
