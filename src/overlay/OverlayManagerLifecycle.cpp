#include "overlay/BackgroundMaterialPipeline.h"
#include "overlay/OverlayManager.h"
#include "overlay/ScreenGeometry.h"
#include "platform/Accessibility.h"
#include "platform/DesktopChanges.h"
#include "platform/MainLoop.h"
#include "platform/Workspace.h"
#include "settings/SettingsStore.h"

#include <algorithm>
#include <utility>

namespace lumo {

namespace {

constexpr double transitionDuration = 0.12;
constexpr double resizeTransitionDuration = 0.22;
constexpr double coverBringForwardInterval = 0.45;
constexpr double sumOfRoundings = 1e-6; // of the times of ticks, of which 27 make that interval

Rect contentBounds(const Screen &screen) {
    return {0, 0, screen.frame.width, screen.frame.height};
}

bool hasDisplay(const std::vector<Screen> &screens, std::uint32_t display) {
    return std::ranges::find(screens, display, displayID) != screens.end();
}

} // namespace

OverlayManager::DisplayOverlay::DisplayOverlay(const Platform &platform, const Screen &screen)
    : panel(platform.overlayWindows, screen.frame)
    , view(contentBounds(screen), panel.platformWindow(), platform) {
}

OverlayManager::OverlayManager(const Platform &platform, SettingsStore &settingsStore)
    : platform_(platform)
    , settingsStore_(settingsStore)
    , windowService_(platform.windowServer, platform.workspace)
    , schedule_(platform.mainLoop, platform.desktopChanges != nullptr, [this] { tick(); }) {
    BackgroundMaterialPipeline::prewarmGrainCache(platform_.screens.screens(), platform_.mainLoop);
}

OverlayManager::~OverlayManager() {
    cleanup();
}

void OverlayManager::startShowing() {
    if (isShowing()) {
        return;
    }
    isShowing_.set(true);
    setupObservers();
    int screenIndex = 0;
    for (const auto &screen : platform_.screens.screens()) {
        createOverlay(screen, screenIndex++);
    }
    platform_.mainLoop.post(lifetime_.guard([this] {
        attemptBringCoverAppToFront(settingsStore_.privacyCoverBringForwardOnStart.value());
    }));
    schedule_.start();
    syncAndUpdate();
}

void OverlayManager::stopShowing() {
    if (!isShowing()) {
        return;
    }
    isShowing_.set(false);
    cleanup();
}

void OverlayManager::peek() {
    for (auto &[display, overlay] : overlays_) {
        overlay.panel.setAlphaValue(0);
    }
}

void OverlayManager::endPeek() {
    for (auto &[display, overlay] : overlays_) {
        overlay.panel.setAlphaValue(1);
    }
}

void OverlayManager::setupObservers() {
    auto followDesktop = lifetime_.guard([this] { syncAndUpdate(); });
    auto followTransition = lifetime_.guard([this] {
        extendTransition(transitionDuration);
        syncAndUpdate();
    });
    auto &workspace = platform_.workspace;
    observers_.clear();
    observers_.push_back(workspace.onDidActivateApplication(followDesktop));
    observers_.push_back(workspace.onDidTerminateApplication(followDesktop));
    observers_.push_back(workspace.onActiveSpaceDidChange(followTransition));
    observers_.push_back(platform_.screens.onScreenParametersDidChange(followTransition));
    if (platform_.desktopChanges != nullptr) {
        const auto wake = [this] { schedule_.wake(); };
        observers_.push_back(platform_.desktopChanges->onChange(wake));
        for (auto *setting : settingsStore_.settings()) {
            observers_.push_back(setting->subscribeToAssignments(wake));
        }
    }
}

void OverlayManager::tick() {
    if (!isShowing()) {
        return;
    }
    const auto stillHere = lifetime_.watch();
    syncAndUpdate();
    if (stillHere && isShowing()) {
        attemptBringCoverAppToFront(false);
    }
}

void OverlayManager::syncAndUpdate() {
    const auto stillHere = lifetime_.watch();
    syncOverlaysToCurrentScreens();
    updateAllOverlays();
    if (stillHere) {
        schedule_.sleepUntil(nextDeadline());
    }
}

// When a tick would do something although nothing has changed.
std::optional<double> OverlayManager::nextDeadline() const {
    std::optional<double> next;
    const auto consider = [&](double time) { next = std::min(next.value_or(time), time); };
    for (const auto &[display, overlay] : overlays_) {
        if (overlay.pendingRender) {
            consider(overlay.pendingRender->firstSeenAt + focusDebounceDuration);
        }
    }
    if (platform_.mainLoop.now() < transitionUntil_) {
        consider(transitionUntil_);
    }
    if (coverApp() != nullptr && settingsStore_.privacyCoverKeepAbove.value()) {
        consider(lastCoverBringForwardAt_ + coverBringForwardInterval);
    }
    return next;
}

void OverlayManager::extendTransition(double seconds) {
    transitionUntil_ = std::max(transitionUntil_, platform_.mainLoop.now() + seconds);
}

void OverlayManager::createOverlay(const Screen &screen, int screenIndex) {
    const DisplayID display = displayID(screen);
    overlays_.erase(display);
    auto &overlay = overlays_.try_emplace(display, platform_, screen).first->second;
    overlay.view.setScreenIdx(screenIndex);
    overlay.panel.orderFront();
}

void OverlayManager::syncOverlaysToCurrentScreens() {
    const auto &screens = platform_.screens.screens();
    BackgroundMaterialPipeline::prewarmGrainCache(screens, platform_.mainLoop);
    removeStaleOverlays();
    int screenIndex = 0;
    for (const auto &screen : screens) {
        const auto overlay = overlays_.find(displayID(screen));
        if (overlay != overlays_.end()) {
            fitOverlay(overlay->second, screen, screenIndex);
        } else {
            createOverlay(screen, screenIndex);
        }
        ++screenIndex;
    }
}

void OverlayManager::removeStaleOverlays() {
    const auto &screens = platform_.screens.screens();
    std::erase_if(overlays_, [&](const auto &entry) {
        const auto &[display, overlay] = entry;
        if (hasDisplay(screens, display)) {
            return false;
        }
        displayMemories_[display].lastSelectedWindow.reset();
        return true;
    });
}

void OverlayManager::fitOverlay(DisplayOverlay &overlay, const Screen &screen, int screenIndex) {
    if (overlay.panel.frame() != screen.frame) {
        overlay.panel.setFrame(screen.frame);
        overlay.lastSnapshot.reset();
        overlay.pendingRender.reset();
        extendTransition(resizeTransitionDuration);
    }
    overlay.view.setFrame(contentBounds(screen));
    overlay.view.setScreenIdx(screenIndex);
}

void OverlayManager::removeOverlays() {
    overlays_.clear();
    for (auto &[display, memory] : displayMemories_) {
        memory.lastLogAt = 0;
    }
}

void OverlayManager::cleanup() {
    prolongCoverLocks(); // which outlive a stop
    schedule_.stop();
    observers_.clear();
    removeOverlays();
}

const std::string *OverlayManager::coverApp() const {
    const auto &bundleID = settingsStore_.privacyCoverBundleID.value();
    const bool isChosen =
        settingsStore_.privacyCoverEnabled.value() && bundleID && !bundleID->empty();
    return isChosen ? &*bundleID : nullptr;
}

void OverlayManager::attemptBringCoverAppToFront(bool force) {
    const auto *coverBundleID = coverApp();
    if (coverBundleID == nullptr) {
        return;
    }
    const double now = platform_.mainLoop.now();
    if (!force && (!settingsStore_.privacyCoverKeepAbove.value() ||
                   now - lastCoverBringForwardAt_ < coverBringForwardInterval - sumOfRoundings)) {
        return;
    }
    lastCoverBringForwardAt_ = now;
    schedule_.sleepUntil(nextDeadline());
    const auto &applications = platform_.workspace.runningApplications();
    const auto cover =
        std::ranges::find(applications, *coverBundleID, &RunningApplication::bundleIdentifier);
    if (cover == applications.end()) {
        return;
    }
    const ProcessID process = cover->processIdentifier;
    platform_.workspace.activate(process,
                                 force ? HiddenApplication::show : HiddenApplication::leave);
    raiseCoverAppWindowIfPossible(process);
}

void OverlayManager::raiseCoverAppWindowIfPossible(ProcessID process) {
    if (!platform_.accessibility.isProcessTrusted()) {
        return;
    }
    for (const auto &window : platform_.accessibility.windows(process)) {
        if (window->raise()) {
            return;
        }
    }
}

void OverlayManager::updateCoverRuntimeStatus(const std::optional<std::string> &coverBundleID,
                                              bool matchedCoverWindow) {
    std::string status;
    if (!settingsStore_.privacyCoverEnabled.value()) {
        status = "Off";
    } else if (!coverBundleID || coverBundleID->empty()) {
        status = "No Cover App selected";
    } else if (matchedCoverWindow) {
        status = "Cover active";
    } else {
        status = settingsStore_.privacyCoverDisplayName.value().value_or(*coverBundleID) +
                 " unavailable";
    }
    settingsStore_.privacyCoverRuntimeStatus.set(std::move(status));
}

} // namespace lumo
