#include "overlay/OverlayManager.h"
#include "overlay/ScreenGeometry.h"
#include "platform/MainLoop.h"
#include "settings/SettingsStore.h"
#include "support/Invariant.h"
#include "support/Log.h"

#include <algorithm>

namespace lumo {

namespace {

constexpr double logInterval = 0.2;

void requireDistinctDisplayIDs(const std::vector<Screen> &screens) {
    for (auto screen = screens.begin(); screen != screens.end(); ++screen) {
        if (std::ranges::count(screens.begin(), screen, displayID(*screen), displayID) > 0) {
            fatal("Duplicate values for key: '" + std::to_string(displayID(*screen)) + "'");
        }
    }
}

// A transition shows the live backdrop whatever is planned.
OverlayManager::ScreenPlan effectivePlan(OverlayManager::ScreenPlan plan, bool isInTransition) {
    using enum OverlayManager::ScreenRenderCommand;
    if (isInTransition) {
        plan.command = liveBackdrop;
    } else if (plan.command != liveBackdrop) {
        plan.referenceWindowID.reset();
    }
    return plan;
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
            displayMemories_[display].coverLock.reset();
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
    auto &lock = displayMemories_[displayID(screen)].coverLock;
    const auto reference =
        resolveCoverReferenceWindowForScreen(screen, context, coverBundleID, lock, now);
    if (reference) {
        lock = CoverLock{*reference, now + settingsStore_.coverWindowLockDuration.value(), now};
    } else {
        lock.reset();
    }
    return reference;
}

// Each of the ticks that were slept through would have prolonged the locks that hold.
void OverlayManager::prolongCoverLocks() {
    const auto missed = schedule_.lastMissedTick();
    if (!missed || *missed <= lastUpdateAt_) {
        return;
    }
    for (auto &[display, memory] : displayMemories_) {
        if (memory.coverLock && memory.coverLock->renewedAt == lastUpdateAt_) {
            memory.coverLock->until += *missed - lastUpdateAt_;
        }
    }
}

void OverlayManager::updateAllOverlays() {
    const auto stillHere = lifetime_.watch();
    prolongCoverLocks();
    lastUpdateAt_ = platform_.mainLoop.now();
    const FocusContext context = buildFocusContext();
    const RenderPlan plan = computeRenderPlan(context);
    // Observers of the cover's status have run: they may have ended the effect, or this object.
    if (!stillHere) {
        return;
    }
    const auto &screens = platform_.screens.screens();
    requireDistinctDisplayIDs(screens);
    const double now = platform_.mainLoop.now();
    for (auto &[display, overlay] : overlays_) {
        const auto screen = std::ranges::find(screens, display, displayID);
        if (screen != screens.end()) {
            const auto planned = plan.find(display);
            updateOverlay(*screen, overlay, planned != plan.end() ? planned->second : ScreenPlan{},
                          context, now);
        }
    }
}

OverlayManager::RenderStep OverlayManager::renderStep(const std::optional<RenderSnapshot> &last,
                                                      const std::optional<PendingRender> &pending,
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

void OverlayManager::updateOverlay(const Screen &screen, DisplayOverlay &overlay,
                                   const ScreenPlan &plan, const FocusContext &context,
                                   double now) {
    const DisplayID display = displayID(screen);
    const ScreenPlan effective = effectivePlan(plan, now < transitionUntil_);
    const bool isLive = effective.command == ScreenRenderCommand::liveBackdrop;
    const auto exclusions = exclusionRects(screen, context);
    RenderSnapshot desired = desiredSnapshot(screen, effective, exclusions);
    const auto &reference = effective.referenceWindowID;

    switch (renderStep(overlay.lastSnapshot, overlay.pendingRender, desired, now)) {
    case RenderStep::unchanged:
        overlay.pendingRender.reset();
        logOverlayState(display, now, "snapshot==desired ref=", reference);
        if (isLive) {
            showLiveBackdrop(display, overlay, reference, exclusions, now);
        }
        return;
    case RenderStep::startDebounce:
        overlay.pendingRender = PendingRender{std::move(desired), now};
        logOverlayState(display, now, "debounce start");
        return;
    case RenderStep::holdDebounce:
        logOverlayState(display, now, "debounce hold");
        return;
    case RenderStep::apply:
        break;
    }
    if (isLive) {
        showLiveBackdrop(display, overlay, reference, exclusions, now);
        logOverlayState(display, now, "apply liveBackdrop ref=", reference);
    } else {
        applyHidden(display, overlay, now);
    }
    overlay.lastSnapshot = std::move(desired);
    overlay.pendingRender.reset();
}

OverlayManager::RenderSnapshot
OverlayManager::desiredSnapshot(const Screen &screen, const ScreenPlan &plan,
                                const std::vector<Rect> &exclusions) const {
    const bool isLive = plan.command == ScreenRenderCommand::liveBackdrop;
    return {.mode = isLive ? 1 : 0,
            .screenFrame = screen.frame.integral(),
            .referenceWindowID = isLive ? plan.referenceWindowID : std::nullopt,
            .exclusionSignature = isLive ? lumo::exclusionSignature(exclusions) : "",
            .effectMode = settingsStore_.effectMode.value(),
            .effectIntensity = settingsStore_.effectIntensity.value(),
            .blurFreeMode = settingsStore_.blurFreeMode.value()};
}

void OverlayManager::showLiveBackdrop(DisplayID displayID, DisplayOverlay &overlay,
                                      std::optional<WindowID> referenceWindowID,
                                      const std::vector<Rect> &exclusions, double now) {
    overlay.panel.orderBelowClearWindow(referenceWindowID);
    logOverlayState(displayID, now, "display-order stable ref=", referenceWindowID);

    const EffectMode mode = settingsStore_.effectMode.value();
    const double intensity = settingsStore_.effectIntensity.value();
    const bool blurFreeMode = settingsStore_.blurFreeMode.value();
    auto &view = overlay.view;
    view.setAlphaValue(1);
    view.materialPipeline().setBlurEnabled(mode == EffectMode::softBlur && !blurFreeMode);
    view.materialPipeline().update(intensity);
    view.applyTintOverlay(mode, intensity, blurFreeMode);
    view.applyExclusionMask(exclusions);
    view.display();
    view.debugLog("mode=liveBackdrop");
}

void OverlayManager::applyHidden(DisplayID displayID, DisplayOverlay &overlay, double now) {
    auto &view = overlay.view;
    view.setAlphaValue(0);
    // So that a display that is shown again starts with its blur layers visible.
    view.materialPipeline().setBlurEnabled(true);
    view.setTintOpacity(0);
    view.removeMask();
    view.display();
    view.debugLog("mode=hidden");
    displayMemories_[displayID].lastSelectedWindow.reset();
    overlay.panel.orderOut();
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
    auto &last = displayMemories_[displayID].lastLogAt;
    if (now - last < logInterval) {
        return false;
    }
    last = now;
    return true;
}

void OverlayManager::printOverlayState(DisplayID displayID, std::string_view message) const {
    platform_.log.printDiagnostic("[Lumo][display " + std::to_string(displayID) + "] " +
                                  std::string(message));
}

} // namespace lumo
