#pragma once

#include "platform/Platform.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Published.h"
#include "support/Signal.h"
#include "windows/WindowListService.h"

#include <chrono>
#include <cstdint>
#include <list>
#include <optional>
#include <string>

namespace lumo {

// The frontmost application and its frontmost window at one moment.
struct FocusChangeEvent {
    std::int32_t frontendPID = 0;
    std::string frontendAppName;                     // "Unknown" when the application has no name
    std::optional<std::uint32_t> windowID;           // absent when it has no window on screen
    std::optional<std::string> windowTitle;          // absent without window or title
    std::chrono::system_clock::time_point timestamp; // when the event was built

    // Only who has the focus counts: the process and the window.
    friend bool operator==(const FocusChangeEvent &a, const FocusChangeEvent &b) {
        return a.frontendPID == b.frontendPID && a.windowID == b.windowID;
    }
};

// Turns changes of the frontmost application and of its focused window into a stream of events, one
// for each real change. Stands by itself: the overlay engine does not use it. Main thread only.
class WindowFocusTracker {
  public:
    explicit WindowFocusTracker(const Platform &platform);
    WindowFocusTracker(const WindowFocusTracker &) = delete;
    WindowFocusTracker &operator=(const WindowFocusTracker &) = delete;

    // The last event that was delivered.
    Published<std::optional<FocusChangeEvent>> currentFocus{std::nullopt};

    // While false, no event is produced; users of the events set it.
    Published<bool> isTracking{false};

    // The least time between two deliveries to currentFocus, in seconds. What comes sooner waits,
    // and only the newest of it is delivered.
    double throttleInterval = 0.1;

    // Every event at once, before the throttle.
    Signal<FocusChangeEvent> focusSubject;

    void handleFrontAppChanged() { updateSoon(); }
    void handleWindowChanged() { updateSoon(); }

    // Builds the current event and sends it if it differs from the one that was sent last.
    void updateCurrentFocus();

    // The title of a window on screen; absent when there is no such window or it has none.
    static std::optional<std::string> getWindowTitle(const WindowServer &windowServer,
                                                     std::uint32_t windowID);

  private:
    void updateSoon();
    void throttle(const FocusChangeEvent &event);
    void deliver(const FocusChangeEvent &event);

    Platform platform_;
    WindowListService windowListService_;
    std::optional<FocusChangeEvent> lastFocusEvent_; // delivered
    std::optional<FocusChangeEvent> waitingEvent_;   // sent later than that, held by the throttle
    std::optional<double> lastDeliveryAt_;
    Handle throttleTimer_;
    std::list<Handle> runs_; // of updateCurrentFocus(), one for each notification
    Subscription stream_;
    Handle appObserver_;
    Handle axObserver_;
    Lifetime lifetime_;
};

} // namespace lumo
