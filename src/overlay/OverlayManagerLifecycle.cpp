#include "overlay/BackgroundMaterialPipeline.h"
#include "overlay/OverlayManager.h"
#include "overlay/ScreenGeometry.h"
#include "platform/Accessibility.h"
#include "platform/MainLoop.h"
#include "platform/Workspace.h"
#include "settings/SettingsStore.h"

#include <algorithm>
#include <utility>

namespace lumo {

namespace {

constexpr double refreshInterval = 1.0 / 60;
constexpr double transitionDuration = 0.12;
constexpr double resizeTransitionDuration = 0.22;
constexpr double coverBringForwardInterval = 0.45;

Rect contentBounds(const Screen &screen) {
    return {0, 0, screen.frame.width, screen.frame.height};
}

bool hasDisplay(const std::vector<Screen> &screens, std::uint32_t display) {
    return std::ranges::find(screens, display, displayID) != screens.end();
}

} // namespace

OverlayManager::OverlayManager(const Platform &platform, SettingsStore &settingsStore)
    : platform_(platform)
    , settingsStore_(settingsStore)
    , windowService_(platform.windowServer, platform.workspace) {
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
    timer_ = platform_.mainLoop.every(refreshInterval, lifetime_.guard([this] { tick(); }));
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
    for (auto &[display, panel] : overlayPanels_) {
        panel.setAlphaValue(0);
    }
}

void OverlayManager::endPeek() {
    for (auto &[display, panel] : overlayPanels_) {
        panel.setAlphaValue(1);
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
}

void OverlayManager::tick() {
    if (!isShowing()) {
        return;
    }
    const auto stillHere = lifetime_.watch();
    syncAndUpdate();
    if (stillHere) {
        attemptBringCoverAppToFront(false);
    }
}

void OverlayManager::syncAndUpdate() {
    syncOverlaysToCurrentScreens();
    updateAllOverlays();
}

void OverlayManager::extendTransition(double seconds) {
    transitionUntil_ = std::max(transitionUntil_, platform_.mainLoop.now() + seconds);
}

void OverlayManager::createOverlay(const Screen &screen, int screenIndex) {
    FullScreenOverlayWindow panel(platform_.overlayWindows, screen.frame);
    const DisplayID display = displayID(screen);
    overlayWindowIDs_.insert(panel.windowNumber());
    screenViews_.erase(display);
    overlayPanels_.erase(display);
    auto &stored = overlayPanels_.try_emplace(display, std::move(panel)).first->second;
    auto &view =
        screenViews_.try_emplace(display, contentBounds(screen), stored.platformWindow(), platform_)
            .first->second;
    view.setScreenIdx(screenIndex);
    stored.orderFront();
}

void OverlayManager::syncOverlaysToCurrentScreens() {
    const auto &screens = platform_.screens.screens();
    BackgroundMaterialPipeline::prewarmGrainCache(screens, platform_.mainLoop);
    removeStaleOverlays();
    int screenIndex = 0;
    for (const auto &screen : screens) {
        const auto panel = overlayPanels_.find(displayID(screen));
        const auto view = screenViews_.find(displayID(screen));
        if (panel != overlayPanels_.end() && view != screenViews_.end()) {
            fitOverlay(panel->second, view->second, screen, screenIndex);
        } else {
            createOverlay(screen, screenIndex);
        }
        ++screenIndex;
    }
}

void OverlayManager::removeStaleOverlays() {
    const auto &screens = platform_.screens.screens();
    for (auto panel = overlayPanels_.begin(); panel != overlayPanels_.end();) {
        const DisplayID display = panel->first;
        if (hasDisplay(screens, display)) {
            ++panel;
            continue;
        }
        overlayWindowIDs_.erase(panel->second.windowNumber());
        panel->second.orderOut();
        screenViews_.erase(display);
        panel = overlayPanels_.erase(panel);
        lastRenderSnapshotByDisplayID_.erase(display);
        pendingRenderByDisplayID_.erase(display);
        lastSelectedWindowByDisplayID_.erase(display);
    }
}

void OverlayManager::fitOverlay(FullScreenOverlayWindow &panel, OverlayScreenView &view,
                                const Screen &screen, int screenIndex) {
    if (panel.frame() != screen.frame) {
        panel.setFrame(screen.frame);
        lastRenderSnapshotByDisplayID_.erase(displayID(screen));
        pendingRenderByDisplayID_.erase(displayID(screen));
        extendTransition(resizeTransitionDuration);
    }
    view.setFrame(contentBounds(screen));
    view.setScreenIdx(screenIndex);
}

void OverlayManager::removeOverlays() {
    for (auto &[display, panel] : overlayPanels_) {
        panel.orderOut();
    }
    screenViews_.clear();
    overlayPanels_.clear();
    overlayWindowIDs_.clear();
    lastRenderSnapshotByDisplayID_.clear();
    lastOverlayLogAtByDisplayID_.clear();
}

void OverlayManager::cleanup() {
    timer_.reset();
    observers_.clear();
    removeOverlays();
}

void OverlayManager::attemptBringCoverAppToFront(bool force) {
    if (!settingsStore_.privacyCoverEnabled.value()) {
        return;
    }
    const auto &coverBundleID = settingsStore_.privacyCoverBundleID.value();
    if (!coverBundleID || coverBundleID->empty()) {
        return;
    }
    const double now = platform_.mainLoop.now();
    if (!force && (!settingsStore_.privacyCoverKeepAbove.value() ||
                   now - lastCoverBringForwardAt_ < coverBringForwardInterval)) {
        return;
    }
    lastCoverBringForwardAt_ = now;
    const auto &applications = platform_.workspace.runningApplications();
    const auto cover =
        std::ranges::find(applications, coverBundleID, &RunningApplication::bundleIdentifier);
    if (cover == applications.end()) {
        return;
    }
    const ProcessID process = cover->processIdentifier;
    platform_.workspace.activate(process);
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
