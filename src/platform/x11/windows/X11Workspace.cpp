#include "platform/x11/windows/X11Workspace.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/windows/WindowMirror.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace lumo::x11 {

namespace {

// Whether a window tells more about its application than another one of it does: one in task bars
// before others, then one with a class, then the older.
bool tellsMore(const MirrorWindow &a, const MirrorWindow &b) {
    const auto rank = [](const MirrorWindow &window) {
        return std::make_tuple(!window.isInTaskbars, !window.isManaged, window.className.empty(),
                               window.client);
    };
    return rank(a) < rank(b);
}

} // namespace

X11Workspace::X11Workspace(Connection &connection, WindowMirror &mirror, const Log &log)
    : mirror_(mirror)
    , pager_(connection, mirror)
    , settingsOpener_(log) {
    handle({});
    changes_ = mirror.onChange([this](const auto &change) { handle(change); });
}

const RunningApplication *X11Workspace::frontmostApplication() const {
    refresh();
    return frontmost_ ? &running_[*frontmost_] : nullptr;
}

const std::vector<RunningApplication> &X11Workspace::runningApplications() const {
    refresh();
    return running_;
}

const RunningApplication *X11Workspace::runningApplication(std::int32_t processIdentifier) const {
    refresh();
    return freedesktop::applicationOf(processIdentifier, running_);
}

Handle X11Workspace::onDidActivateApplication(std::function<void()> observer) {
    return activated_.subscribe(std::move(observer));
}

Handle X11Workspace::onDidTerminateApplication(std::function<void()> observer) {
    return terminated_.subscribe(std::move(observer));
}

Handle X11Workspace::onActiveSpaceDidChange(std::function<void()> observer) {
    return spaceChanged_.subscribe(std::move(observer));
}

std::uint64_t X11Workspace::revision() const {
    return mirror_.identityRevision() + applications_.revision();
}

void X11Workspace::refresh() const {
    if (mirrorRevision_ == mirror_.identityRevision() &&
        entriesRevision_ == applications_.revision()) {
        return;
    }
    mirrorRevision_ = mirror_.identityRevision();
    entriesRevision_ = applications_.revision();

    std::map<std::int32_t, const MirrorWindow *> best;
    for (const auto frame : mirror_.stacking()) {
        const auto &window = *mirror_.find(frame);
        if (!window.isDescribed) {
            continue;
        }
        auto &known = best[window.processIdentifier];
        if (known == nullptr || tellsMore(window, *known)) {
            known = &window;
        }
    }
    running_.clear();
    for (const auto &[pid, window] : best) {
        running_.push_back(applications_.identify(pid, {window->className, window->instanceName},
                                                  window->isInTaskbars));
    }
    applications_.keepOnly(running_);

    frontmost_.reset();
    const auto active = mirror_.activeWindow();
    const auto *front = active ? mirror_.find(*active) : nullptr;
    for (std::size_t i = 0; front != nullptr && i < running_.size(); ++i) {
        if (running_[i].processIdentifier == front->processIdentifier) {
            frontmost_ = i;
        }
    }
}

void X11Workspace::handle(const MirrorChange &change) {
    refresh();
    std::vector<std::int32_t> processes;
    for (const auto &application : running_) {
        processes.push_back(application.processIdentifier);
    }
    const auto before = std::exchange(announcedProcesses_, std::move(processes));
    const bool hasTerminated = !std::includes(
        announcedProcesses_.begin(), announcedProcesses_.end(), before.begin(), before.end());
    const auto *frontmost = frontmostApplication();
    const decltype(announcedFront_) front = {mirror_.activeWindow(),
                                             frontmost ? frontmost->processIdentifier : 0};
    const bool hasActivated = std::exchange(announcedFront_, front) != front;
    if (hasTerminated) {
        terminated_.emit();
    }
    if (change.currentDesktop) {
        spaceChanged_.emit();
    }
    if (hasActivated) {
        activated_.emit();
    }
}

std::vector<InstalledApplication> X11Workspace::installedApplications() const {
    return applications_.installed();
}

bool X11Workspace::activate(std::int32_t processIdentifier, HiddenApplication ifHidden) {
    if (!pager_.isAvailable()) {
        return false;
    }
    // Of the application's windows those that are shown, else those that could be.
    std::vector<const MirrorWindow *> shown;
    const MirrorWindow *hidden = nullptr;
    bool isOnTop = true; // no other application's ordinary window is above one of them
    for (const auto frame : mirror_.stacking()) {
        const auto &window = *mirror_.find(frame);
        if (!window.isManaged || window.isOwn || window.type == WindowFacts::Type::dock ||
            window.stackingLayer == StackingLayer::desktop) {
            continue;
        }
        const bool isShown =
            window.isMapped && !window.isMinimized() && mirror_.isOnShownDesktop(window);
        if (window.processIdentifier != processIdentifier) {
            isOnTop &= !isShown || window.stackingLayer != StackingLayer::normal || shown.empty();
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
    const bool isActive = frontmostApplication() != nullptr &&
                          frontmostApplication()->processIdentifier == processIdentifier;
    if (isActive && isOnTop && !shown.empty()) {
        return true;
    }
    for (const auto *window : shown) {
        if (window != front && !isOnTop) {
            pager_.raise(*window);
        }
    }
    pager_.activate(*front);
    return true;
}

} // namespace lumo::x11
