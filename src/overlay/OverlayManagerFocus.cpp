#include "overlay/OverlayManager.h"
#include "overlay/ScreenGeometry.h"
#include "platform/Workspace.h"
#include "support/Log.h"

#include <algorithm>

namespace lumo {

namespace {

constexpr std::string_view lumoOwnerName = "Lumo";
constexpr std::string_view windowManagerOwnerName = "WindowManager";

bool isOwnedBySystem(std::string_view ownerName) {
    return WindowListService::isSystemWindow(ownerName) || ownerName == windowManagerOwnerName ||
           ownerName == lumoOwnerName;
}

std::string selectionLine(OverlayManager::DisplayID displayID, const ScreenCandidate &choice) {
    const WindowDescriptor &window = *choice.window;
    return "[Lumo] screen=" + std::to_string(displayID) +
           " select window=" + std::to_string(window.windowID) + " owner=" + window.ownerName +
           " pid=" + std::to_string(window.ownerPID) + " z=" + std::to_string(window.zOrder) +
           " bounds=" + describe(window.bounds) + " local=" + describe(choice.local);
}

} // namespace

OverlayManager::FocusContext OverlayManager::buildFocusContext() {
    FocusContext context;
    // A backend may have replaced the window of an overlay.
    overlayWindowIDs_.clear();
    for (const auto &[display, overlay] : overlays_) {
        overlayWindowIDs_.insert(overlay.panel.windowNumber());
    }
    const RunningApplication &own = platform_.workspace.ownApplication();
    std::optional<std::string_view> frontBundleID;
    if (const RunningApplication *front = platform_.workspace.frontmostApplication()) {
        context.frontPID = front->processIdentifier;
        frontBundleID = front->bundleIdentifier;
        const auto windowIDs = windowService_.windowIDs(*front);
        if (!windowIDs.empty()) {
            context.frontWindowID = windowIDs.front();
        }
    }
    // Two absent identifiers are equal, and that is meant.
    context.frontIsLumo = frontBundleID == own.bundleIdentifier;
    context.allWindows = windowService_.allVisibleWindows();
    context.windows.reserve(context.allWindows->size());
    for (const auto &window : *context.allWindows) {
        if (isCandidate(window)) {
            context.windows.push_back(&window);
        }
    }
    context.effectiveFrontPID = resolveEffectiveFrontPID(context);
    context.effectiveFrontWindowID = effectiveFrontWindow(
        context.frontIsLumo, context.frontWindowID, context.windows, context.effectiveFrontPID);
    return context;
}

bool OverlayManager::isCandidate(const WindowDescriptor &window) const {
    constexpr double largestSideOfAnAccessory = 100;
    return window.isOnScreen && window.layer == 0 &&
           window.bounds.width > largestSideOfAnAccessory &&
           window.bounds.height > largestSideOfAnAccessory &&
           !(platform_.capabilities.systemComponentsHaveNames &&
             isOwnedBySystem(window.ownerName)) &&
           window.ownerPID != platform_.workspace.ownApplication().processIdentifier &&
           !overlayWindowIDs_.contains(window.windowID) &&
           !(window.name && WindowListService::isTransientWindow(*window.name));
}

std::optional<OverlayManager::ProcessID>
OverlayManager::resolveEffectiveFrontPID(const FocusContext &context) {
    if (context.frontIsLumo) {
        if (!context.windows.empty()) {
            lastResolvedFrontPID_ = context.windows.front()->ownerPID;
        }
        return lastResolvedFrontPID_;
    }
    if (context.frontPID) {
        lastResolvedFrontPID_ = context.frontPID;
    }
    return context.frontPID;
}

std::optional<OverlayManager::WindowID>
OverlayManager::resolveGlobalReferenceWindow(const FocusContext &context) {
    if (context.effectiveFrontWindowID) {
        return context.effectiveFrontWindowID;
    }
    if (context.windows.empty()) {
        return std::nullopt;
    }
    const auto owned = std::ranges::find_if(context.windows, [&](const WindowDescriptor *window) {
        return window->ownerPID == context.effectiveFrontPID;
    });
    return (owned == context.windows.end() ? context.windows.front() : *owned)->windowID;
}

std::optional<OverlayManager::WindowID>
OverlayManager::resolveReferenceWindowForScreen(const Screen &screen, const FocusContext &context) {
    const DisplayID display = displayID(screen);
    auto &last = displayMemories_[display].lastSelectedWindow;
    const auto choice = frontmostWindowOnScreen(context.windows, screen.frame,
                                                highestScreenEdge(platform_.screens.screens()));
    if (!choice) {
        last.reset();
        return std::nullopt;
    }
    const WindowID chosen = choice->window->windowID;
    if (last != chosen) {
        last = chosen;
        platform_.log.printDiagnostic(selectionLine(display, *choice));
    }
    return chosen;
}

std::optional<OverlayManager::WindowID> OverlayManager::resolveCoverReferenceWindowForScreen(
    const Screen &screen, const FocusContext &context, const std::string &coverBundleID,
    const std::optional<CoverLock> &lock, double now) const {
    if (lock && now < lock->until) {
        const WindowID locked = lock->windowID;
        // Wherever the window is by now: a lock holds also when it was moved to another display.
        const bool isStillThere =
            std::ranges::any_of(context.windows, [&](const WindowDescriptor *window) {
                return window->windowID == locked && window->bundleID == coverBundleID;
            });
        if (isStillThere) {
            return locked;
        }
    }
    const auto choice =
        frontmostCoverWindowOnScreen(context.windows, coverBundleID, screen.frame,
                                     highestScreenEdge(platform_.screens.screens()));
    return choice ? std::optional(choice->window->windowID) : std::nullopt;
}

} // namespace lumo
