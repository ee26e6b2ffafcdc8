#include "windows/WindowFocusTracker.h"

#include "platform/Accessibility.h"
#include "platform/MainLoop.h"
#include "platform/WindowServer.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <utility>

namespace lumo {

namespace {

// Seconds from a notification to the look at what has changed: lists follow notifications late.
constexpr double settleTime = 0.05;

} // namespace

WindowFocusTracker::WindowFocusTracker(const Platform &platform)
    : platform_(platform)
    , windowListService_(platform.windowServer, platform.workspace)
    , stream_(focusSubject.subscribe([this](const auto &event) { throttle(event); }))
    , appObserver_(platform.workspace.onDidActivateApplication([this] { handleFrontAppChanged(); }))
    , axObserver_(
          platform.accessibility.onFocusedWindowDidChange([this] { handleWindowChanged(); })) {
}

void WindowFocusTracker::updateSoon() {
    const auto run = runs_.emplace(runs_.end());
    *run = platform_.mainLoop.after(settleTime, lifetime_.guard([this, run] {
        runs_.erase(run);
        updateCurrentFocus();
    }));
}

void WindowFocusTracker::updateCurrentFocus() {
    if (!isTracking.value()) {
        return;
    }
    const auto *application = platform_.workspace.frontmostApplication();
    if (application == nullptr) {
        return;
    }
    FocusChangeEvent event;
    event.frontendPID = application->processIdentifier;
    event.frontendAppName = application->localizedName.value_or("Unknown");
    const auto windows = windowListService_.windowIDs(*application);
    if (!windows.empty()) {
        event.windowID = windows.front();
        event.windowTitle = getWindowTitle(platform_.windowServer, windows.front());
    }
    event.timestamp = std::chrono::system_clock::now();
    const auto &lastSent = waitingEvent_ ? waitingEvent_ : lastFocusEvent_;
    if (lastSent != event) {
        focusSubject.emit(event);
    }
}

std::optional<std::string> WindowFocusTracker::getWindowTitle(const WindowServer &windowServer,
                                                              std::uint32_t windowID) {
    const auto records = windowServer.onScreenWindows();
    if (!records) {
        return std::nullopt;
    }
    const auto found = std::ranges::find(*records, windowID, &WindowRecord::number);
    return found != records->end() ? found->title : std::nullopt;
}

void WindowFocusTracker::throttle(const FocusChangeEvent &event) {
    const double now = platform_.mainLoop.now();
    if (!waitingEvent_ && (!lastDeliveryAt_ || now - *lastDeliveryAt_ >= throttleInterval)) {
        deliver(event);
        return;
    }
    if (!waitingEvent_) {
        throttleTimer_ = platform_.mainLoop.after(
            *lastDeliveryAt_ + throttleInterval - now,
            lifetime_.guard([this] { deliver(*std::exchange(waitingEvent_, std::nullopt)); }));
    }
    waitingEvent_ = event;
}

void WindowFocusTracker::deliver(const FocusChangeEvent &event) {
    lastDeliveryAt_ = platform_.mainLoop.now();
    lastFocusEvent_ = event;
    currentFocus.set(event);
}

} // namespace lumo
