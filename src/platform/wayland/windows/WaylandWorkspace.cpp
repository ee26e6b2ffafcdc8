#include "platform/wayland/windows/WaylandWorkspace.h"

#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/wayland/windows/WindowSource.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace lumo::wayland {

namespace {

using Presence = DesktopWindow::Presence;

// The name of the program that a process runs; empty when it can't be told.
std::string executableOf(std::int32_t processIdentifier) {
    std::error_code error;
    const auto path =
        std::filesystem::read_symlink("/proc/" + std::to_string(processIdentifier) + "/exe", error);
    return error ? std::string() : path.filename().string();
}

} // namespace

WaylandWorkspace::WaylandWorkspace(WindowSource &source, const Log &log)
    : source_(source)
    , settingsOpener_(log)
    , own_{getpid(), freedesktop::program::identifier, freedesktop::program::name,
           ActivationPolicy::accessory} {
    announce();
    changes_ = {source.onChange([this] {
                    isStale_ = true;
                    announce();
                }),
                entries_.onChange([this] {
                    isStale_ = true;
                    identities_.clear();
                    entriesChanged_.emit();
                })};
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
    const auto found = std::ranges::lower_bound(running_, processIdentifier, {},
                                                &RunningApplication::processIdentifier);
    return found != running_.end() && found->processIdentifier == processIdentifier ? &*found
                                                                                    : nullptr;
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
        running_.push_back(identify(*window));
    }
    std::erase_if(identities_, [&](const auto &entry) { return !best.contains(entry.first); });
}

RunningApplication WaylandWorkspace::identify(const DesktopWindow &window) const {
    const auto policy =
        window.isInTaskbars ? ActivationPolicy::regular : ActivationPolicy::accessory;
    if (window.process == own_.processIdentifier) {
        auto own = own_;
        own.activationPolicy = policy;
        return own;
    }
    auto &[named, application] = identities_[window.process];
    if (application.processIdentifier == 0 || named != window.application) {
        named = window.application;
        application = {window.process, std::nullopt, std::nullopt, policy};
        const auto *entry =
            entries_.find(window.application, window.application, executableOf(window.process));
        if (entry != nullptr) {
            application.bundleIdentifier = entry->identifier;
            application.localizedName = entry->name;
        } else if (!window.application.empty()) {
            application.bundleIdentifier = window.application;
            application.localizedName = window.application;
        }
    }
    application.activationPolicy = policy;
    return application;
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
    std::vector<InstalledApplication> applications;
    for (const auto *entry : entries_.inMenu()) {
        applications.push_back({entry->identifier, entry->name});
    }
    return applications;
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
