#pragma once

#include "overlay/FullScreenOverlayWindow.h"
#include "overlay/OverlayScreenView.h"
#include "overlay/ReferenceWindow.h"
#include "overlay/TickSchedule.h"
#include "platform/Platform.h"
#include "platform/Screens.h"
#include "settings/EffectMode.h"
#include "support/Geometry.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Published.h"
#include "windows/WindowListService.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

class SettingsStore;

// Owns one overlay per display while the effect is shown, and decides at each tick which window
// stays clear on each display and what each overlay shows. See TickSchedule for when it ticks.
//
// One update goes: the desktop becomes a FocusContext, that a RenderPlan, that one RenderSnapshot
// per display, and only a snapshot that differs from the last applied one changes what is drawn.
// What is kept for a display is found by its identifier, see displayID(). Times are seconds on the
// main loop's clock. Main thread only.
class OverlayManager {
  public:
    using DisplayID = std::uint32_t;
    using WindowID = std::uint32_t;
    using ProcessID = std::int32_t;

    // The desktop at one moment, as far as it decides about focus.
    struct FocusContext {
        std::shared_ptr<const std::vector<WindowDescriptor>> allWindows;
        // The frontmost application, and the first of its windows.
        std::optional<ProcessID> frontPID;
        std::optional<WindowID> frontWindowID;
        bool frontIsLumo = false;
        // What counts as in front and as focused.
        std::optional<ProcessID> effectiveFrontPID;
        std::optional<WindowID> effectiveFrontWindowID;
        // Those of allWindows that can stay clear, in the same order.
        CandidateWindows windows;
    };

    // Holds a display's clear window to one window of the Cover App until a time.
    struct CoverLock {
        WindowID windowID = 0;
        double until = 0;
        double renewedAt = 0; // when an update last prolonged it
    };

    enum class ScreenRenderCommand { hidden, liveBackdrop };

    struct ScreenPlan {
        ScreenRenderCommand command = ScreenRenderCommand::hidden;
        // The window that stays clear; absent when the whole display is covered.
        std::optional<WindowID> referenceWindowID;
    };

    using RenderPlan = std::map<DisplayID, ScreenPlan>;

    // Everything that one display's picture depends on.
    struct RenderSnapshot {
        int mode = 0; // 0 hidden, 1 live backdrop
        Rect screenFrame;
        std::optional<WindowID> referenceWindowID;
        std::string exclusionSignature; // empty while hidden
        EffectMode effectMode = EffectMode::softBlur;
        double effectIntensity = 0;
        bool blurFreeMode = false;

        bool operator==(const RenderSnapshot &) const = default;
    };

    // A change of the clear window that waits out the debounce.
    struct PendingRender {
        RenderSnapshot snapshot;
        double firstSeenAt = 0;
    };

    // Seconds for which another clear window has to be wanted before it is shown.
    static constexpr double focusDebounceDuration = 0.08;

    // What is to be done about a display's desired snapshot.
    enum class RenderStep { unchanged, apply, startDebounce, holdDebounce };

    // Shows nothing yet. Everything that the platform refers to, and the store, must outlive the
    // manager.
    OverlayManager(const Platform &platform, SettingsStore &settingsStore);

    // Closes what is shown. May happen in the middle of an observer's call or a tick.
    ~OverlayManager();

    OverlayManager(const OverlayManager &) = delete;
    OverlayManager &operator=(const OverlayManager &) = delete;

    // Turn the effect on and off. Nothing happens when it is so already.
    void startShowing();
    void stopShowing();

    // Make every overlay transparent as a whole, and opaque again. How long lies with the caller; a
    // display that is plugged in meanwhile gets an opaque overlay.
    void peek();
    void endPeek();

    // True from startShowing() to stopShowing().
    bool isShowing() const { return isShowing_.value(); }
    Subscription subscribeToIsShowing(std::function<void(const bool &)> observer) {
        return isShowing_.subscribe(std::move(observer));
    }

    // Brings every overlay up to date with the desktop and the settings. Runs by itself while
    // showing. Fatal when two screens have the same display identifier.
    void updateAllOverlays();

    // The snapshot rule, from its arguments alone: a change of the clear window has to be wanted
    // for the debounce time before it is applied, any other change is applied at once.
    static RenderStep renderStep(const std::optional<RenderSnapshot> &last,
                                 const std::optional<PendingRender> &pending,
                                 const RenderSnapshot &desired, double now);

    // The clear window for all displays together, from the context alone.
    static std::optional<WindowID> resolveGlobalReferenceWindow(const FocusContext &context);

  private:
    // What is shown on one display, for as long as the display is connected and the effect on.
    struct DisplayOverlay {
        DisplayOverlay(const Platform &platform, const Screen &screen);

        FullScreenOverlayWindow panel;
        OverlayScreenView view; // draws on the panel
        std::optional<RenderSnapshot> lastSnapshot;
        std::optional<PendingRender> pendingRender;
    };

    // What outlives a display's overlay.
    struct DisplayMemory {
        // Survives a stop and the display itself.
        std::optional<CoverLock> coverLock;
        // Only keeps the same choice from being logged again. Survives a stop.
        std::optional<WindowID> lastSelectedWindow;
        // When the display's state was last logged. Survives the display.
        double lastLogAt = 0;
    };

    // Focus
    FocusContext buildFocusContext();
    bool isCandidate(const WindowDescriptor &window) const;
    std::optional<ProcessID> resolveEffectiveFrontPID(const FocusContext &context);
    std::optional<WindowID> resolveReferenceWindowForScreen(const Screen &screen,
                                                            const FocusContext &context);
    std::optional<WindowID>
    resolveCoverReferenceWindowForScreen(const Screen &screen, const FocusContext &context,
                                         const std::string &coverBundleID,
                                         const std::optional<CoverLock> &lock, double now) const;

    // Plan
    RenderPlan computeRenderPlan(const FocusContext &context);
    std::optional<WindowID> resolveAndLockCoverWindow(const Screen &screen,
                                                      const FocusContext &context,
                                                      const std::string &coverBundleID, double now);
    void updateOverlay(const Screen &screen, DisplayOverlay &overlay, const ScreenPlan &plan,
                       const FocusContext &context, double now);
    RenderSnapshot desiredSnapshot(const Screen &screen, const ScreenPlan &plan,
                                   const std::vector<Rect> &exclusions) const;
    void showLiveBackdrop(DisplayID displayID, DisplayOverlay &overlay,
                          std::optional<WindowID> referenceWindowID,
                          const std::vector<Rect> &exclusions, double now);
    void applyHidden(DisplayID displayID, DisplayOverlay &overlay, double now);
    // At most one line per display and 0.2 s.
    void logOverlayState(DisplayID displayID, double now, std::string_view message);
    // As the other, with the window, or "nil" without one, after the message.
    void logOverlayState(DisplayID displayID, double now, std::string_view message,
                         const std::optional<WindowID> &referenceWindowID);
    bool takeLogTurn(DisplayID displayID, double now);
    void printOverlayState(DisplayID displayID, std::string_view message) const;

    // Geometry
    bool areApplicationStripsEnabled();
    // What stays clear on the screen beside the clear window, in points in its view.
    std::vector<Rect> exclusionRects(const Screen &screen, const FocusContext &context);

    // Lifecycle
    void setupObservers();
    void tick();
    void syncAndUpdate();
    std::optional<double> nextDeadline() const;
    // The Cover App that is to be held clear; null when there is none.
    const std::string *coverApp() const;
    void prolongCoverLocks();
    void syncOverlaysToCurrentScreens();
    void removeStaleOverlays();
    void fitOverlay(DisplayOverlay &overlay, const Screen &screen, int screenIndex);
    void createOverlay(const Screen &screen, int screenIndex);
    void removeOverlays();
    void cleanup();
    void extendTransition(double seconds);
    void attemptBringCoverAppToFront(bool force);
    void raiseCoverAppWindowIfPossible(ProcessID process);
    void updateCoverRuntimeStatus(const std::optional<std::string> &coverBundleID,
                                  bool matchedCoverWindow);

    const Platform platform_;
    SettingsStore &settingsStore_;
    WindowListService windowService_;
    std::map<DisplayID, DisplayOverlay> overlays_;
    std::map<DisplayID, DisplayMemory> displayMemories_;
    std::set<WindowID> overlayWindowIDs_; // as of the last focus context
    Published<bool> isShowing_{false};
    TickSchedule schedule_;
    double lastUpdateAt_ = 0;
    std::vector<Handle> observers_;
    // The last application that was resolved as in front.
    std::optional<ProcessID> lastResolvedFrontPID_;
    // Until then every display stays on its live backdrop.
    double transitionUntil_ = 0;
    double lastCoverBringForwardAt_ = 0;
    // What the desktop told last about its strips of recent applications.
    bool lastKnownStripsEnabled_ = false;
    Lifetime lifetime_;
};

} // namespace lumo
