#include "overlay/OverlayManager.h"
#include "overlay/ScreenGeometry.h"
#include "platform/MainLoop.h"
#include "settings/SettingsStore.h"
#include "support/Invariant.h"
#include "support/Log.h"

#include <algorithm>

namespace lumo {

namespace {

constexpr double focusDebounceDuration = 0.08;
constexpr double logInterval = 0.2;

// The entry of a table, or null.
template <class Key, class Entry>
const Entry *entryOf(const std::map<Key, Entry> &table, Key key) {
    const auto found = table.find(key);
    return found == table.end() ? nullptr : &found->second;
}

void requireDistinctDisplayIDs(const std::vector<Screen> &screens) {
    for (auto screen = screens.begin(); screen != screens.end(); ++screen) {
        if (std::ranges::count(screens.begin(), screen, displayID(*screen), displayID) > 0) {
            fatal("Duplicate values for key: '" + std::to_string(displayID(*screen)) + "'");
        }
    }
}

} // namespace

OverlayManager::RenderPlan OverlayManager::computeRenderPlan(const FocusContext &context) {
    RenderPlan plan;
    const auto &screens = platform_.screens.screens();
    if (!isShowing()) {
        for (const auto &screen : screens) {
            plan[displayID(screen)] = {};
        }
        return plan;
    }
    const auto coverBundleID = settingsStore_.privacyCoverEnabled.value()
                                   ? settingsStore_.privacyCoverBundleID.value()
                                   : std::nullopt;
    const double now = platform_.mainLoop.now();
    const bool isGlobal = settingsStore_.multiScreenMode.value() == MultiScreenMode::global;
    const auto globalReference = resolveGlobalReferenceWindow(context);
    bool matchedCoverWindow = false;
    for (const auto &screen : screens) {
        const DisplayID display = displayID(screen);
        std::optional<WindowID> reference;
        if (coverBundleID) {
            reference = resolveAndLockCoverWindow(screen, context, *coverBundleID, now);
            matchedCoverWindow = matchedCoverWindow || reference;
        } else {
            coverLockByDisplayID_.erase(display);
            reference =
                isGlobal ? globalReference : resolveReferenceWindowForScreen(screen, context);
        }
        plan[display] = {ScreenRenderCommand::liveBackdrop, reference};
    }
    updateCoverRuntimeStatus(coverBundleID, matchedCoverWindow);
    return plan;
}

std::optional<OverlayManager::WindowID>
OverlayManager::resolveAndLockCoverWindow(const Screen &screen, const FocusContext &context,
                                          const std::string &coverBundleID, double now) {
    const auto reference =
        resolveCoverReferenceWindowForScreen(screen, context, coverBundleID, now);
    if (reference) {
        const double until = now + settingsStore_.coverWindowLockDuration.value();
        coverLockByDisplayID_.insert_or_assign(displayID(screen), CoverLock{*reference, until});
    } else {
        coverLockByDisplayID_.erase(displayID(screen));
    }
    return reference;
}

void OverlayManager::updateAllOverlays() {
    const auto stillHere = lifetime_.watch();
    const FocusContext context = buildFocusContext();
    const RenderPlan plan = computeRenderPlan(context);
    // Observers of the cover's status have run: they may have ended the effect, or this object.
    if (!stillHere) {
        return;
    }
    const auto &screens = platform_.screens.screens();
    requireDistinctDisplayIDs(screens);
    const double now = platform_.mainLoop.now();
    for (auto &[display, view] : screenViews_) {
        const auto panel = overlayPanels_.find(display);
        const auto screen = std::ranges::find(screens, display, displayID);
        if (panel == overlayPanels_.end() || screen == screens.end()) {
            continue;
        }
        const ScreenPlan *planned = entryOf(plan, display);
        updateOverlay(*screen, panel->second, view, planned ? *planned : ScreenPlan{}, context,
                      now);
    }
}

OverlayManager::RenderStep OverlayManager::renderStep(const RenderSnapshot *last,
                                                      const PendingRender *pending,
                                                      const RenderSnapshot &desired, double now) {
    if (last && *last == desired) {
        return RenderStep::unchanged;
    }
    if (!last || last->referenceWindowID == desired.referenceWindowID) {
        return RenderStep::apply;
    }
    if (!pending || pending->snapshot != desired) {
        return RenderStep::startDebounce;
    }
    return now - pending->firstSeenAt < focusDebounceDuration ? RenderStep::holdDebounce
                                                              : RenderStep::apply;
}

void OverlayManager::updateOverlay(const Screen &screen, FullScreenOverlayWindow &panel,
                                   OverlayScreenView &view, const ScreenPlan &plan,
                                   const FocusContext &context, double now) {
    const DisplayID display = displayID(screen);
    ScreenPlan effective = plan;
    if (now < transitionUntil_) {
        effective.command = ScreenRenderCommand::liveBackdrop;
    } else if (plan.command != ScreenRenderCommand::liveBackdrop) {
        effective.referenceWindowID.reset();
    }
    const bool isLive = effective.command == ScreenRenderCommand::liveBackdrop;
    const auto exclusionRects = stageManagerExclusionRects(screen, context);
    RenderSnapshot desired = desiredSnapshot(screen, effective, exclusionRects);
    const auto &reference = effective.referenceWindowID;

    switch (renderStep(entryOf(lastRenderSnapshotByDisplayID_, display),
                       entryOf(pendingRenderByDisplayID_, display), desired, now)) {
    case RenderStep::unchanged:
        pendingRenderByDisplayID_.erase(display);
        logOverlayState(display, now, "snapshot==desired ref=", reference);
        if (isLive) {
            showLiveBackdrop(display, panel, view, reference, exclusionRects, now);
        }
        return;
    case RenderStep::startDebounce:
        pendingRenderByDisplayID_.insert_or_assign(display, PendingRender{desired, now});
        logOverlayState(display, now, "debounce start");
        return;
    case RenderStep::holdDebounce:
        logOverlayState(display, now, "debounce hold");
        return;
    case RenderStep::apply:
        break;
    }
    if (isLive) {
        showLiveBackdrop(display, panel, view, reference, exclusionRects, now);
        logOverlayState(display, now, "apply liveBackdrop ref=", reference);
    } else {
        applyHidden(display, panel, view, now);
    }
    lastRenderSnapshotByDisplayID_.insert_or_assign(display, std::move(desired));
    pendingRenderByDisplayID_.erase(display);
}

OverlayManager::RenderSnapshot
OverlayManager::desiredSnapshot(const Screen &screen, const ScreenPlan &plan,
                                const std::vector<Rect> &exclusionRects) const {
    const bool isLive = plan.command == ScreenRenderCommand::liveBackdrop;
    return {.mode = isLive ? 1 : 0,
            .screenFrame = screen.frame.integral(),
            .referenceWindowID = isLive ? plan.referenceWindowID : std::nullopt,
            .exclusionSignature = isLive ? lumo::exclusionSignature(exclusionRects) : "",
            .effectMode = settingsStore_.effectMode.value(),
            .effectIntensity = settingsStore_.effectIntensity.value(),
            .blurFreeMode = settingsStore_.blurFreeMode.value()};
}

void OverlayManager::showLiveBackdrop(DisplayID displayID, FullScreenOverlayWindow &panel,
                                      OverlayScreenView &view,
                                      std::optional<WindowID> referenceWindowID,
                                      const std::vector<Rect> &exclusionRects, double now) {
    panel.orderBelowClearWindow(referenceWindowID);
    logOverlayState(displayID, now, "display-order stable ref=", referenceWindowID);

    const EffectMode mode = settingsStore_.effectMode.value();
    const double intensity = settingsStore_.effectIntensity.value();
    const bool blurFreeMode = settingsStore_.blurFreeMode.value();
    view.setAlphaValue(1);
    view.materialPipeline().setBlurEnabled(mode == EffectMode::softBlur && !blurFreeMode);
    view.materialPipeline().update(intensity);
    view.applyTintOverlay(mode, intensity, blurFreeMode);
    view.applyExclusionMask(exclusionRects);
    view.display();
    view.debugLog("mode=liveBackdrop");
}

void OverlayManager::applyHidden(DisplayID displayID, FullScreenOverlayWindow &panel,
                                 OverlayScreenView &view, double now) {
    view.setAlphaValue(0);
    // So that a display that is shown again starts with its blur layers visible.
    view.materialPipeline().setBlurEnabled(true);
    view.setTintOpacity(0);
    view.removeMask();
    view.display();
    view.debugLog("mode=hidden");
    lastSelectedWindowByDisplayID_.erase(displayID);
    panel.orderOut();
    logOverlayState(displayID, now, "apply hidden");
}

void OverlayManager::logOverlayState(DisplayID displayID, double now, std::string_view message) {
    if (takeLogTurn(displayID, now)) {
        printOverlayState(displayID, message);
    }
}

void OverlayManager::logOverlayState(DisplayID displayID, double now, std::string_view message,
                                     const std::optional<WindowID> &referenceWindowID) {
    if (takeLogTurn(displayID, now)) {
        printOverlayState(displayID, std::string(message) +
                                         (referenceWindowID ? std::to_string(*referenceWindowID)
                                                            : std::string("nil")));
    }
}

bool OverlayManager::takeLogTurn(DisplayID displayID, double now) {
    const double *last = entryOf(lastOverlayLogAtByDisplayID_, displayID);
    if (now - (last ? *last : 0) < logInterval) {
        return false;
    }
    lastOverlayLogAtByDisplayID_[displayID] = now;
    return true;
}

void OverlayManager::printOverlayState(DisplayID displayID, std::string_view message) const {
    platform_.log.print("[Lumo][display " + std::to_string(displayID) + "] " +
                        std::string(message));
}

} // namespace lumo
