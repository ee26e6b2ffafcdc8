#pragma once

#include "platform/Platform.h"
#include "support/Handle.h"
#include "support/Published.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace lumo {

class SettingsStore;
struct InputEvent;

// Recognises a shake of the pointer anywhere on the desktop: four quick strokes to the left and
// right in turn. Listens while the settings say so. Main thread only.
class MouseShakeToggleManager {
  public:
    enum class Action { toggle, peek };

    static constexpr double minStrokeDistance = 90.0;  // points of net travel that make a stroke
    static constexpr double maxGestureDuration = 1.15; // seconds since the first stroke
    static constexpr double maxPauseBetweenStrokes = 0.34; // seconds since the previous stroke
    static constexpr double cooldownDuration = 0.9; // seconds of rest after a recognised shake
    static constexpr int requiredStrokeCount = 4;

    // Listens at once if the settings say so. The store must outlive the manager.
    MouseShakeToggleManager(const Platform &platform, SettingsStore &settingsStore);
    MouseShakeToggleManager(const MouseShakeToggleManager &) = delete;
    MouseShakeToggleManager &operator=(const MouseShakeToggleManager &) = delete;

    Published<bool> isListening{false};

    // Called from within the event's handler.
    std::function<void(Action)> onShakeAction;

    // Nothing happens when it listens, or does not listen, already.
    void startListening();
    void stopListening();

    // Whether the modifier of that name is among the flags; always true for any other name than
    // "Shift", "Option", "Command" and "Control".
    static bool modifierMatches(std::uint32_t flags, std::string_view configured);

  private:
    // The shake so far. Times are those of the main loop's clock; 0 when there is none.
    struct Gesture {
        int strokeCount = 0;
        int lastDirection = 0;   // 1 to the right, -1 to the left
        double accumulatedX = 0; // points since the last stroke
        double firstStrokeAt = 0;
        double lastStrokeAt = 0;

        // Adds a movement; true when it completes the last stroke that was needed.
        bool add(double dx, double now);
    };

    void setupSettingsBinding();
    void handleMouseEvent(const InputEvent &event);
    void triggerAction(std::uint32_t flags);
    std::optional<Action> actionFor(std::uint32_t flags) const;

    EventMonitors &eventMonitors_;
    MainLoop &mainLoop_;
    SettingsStore &settingsStore_;
    Gesture gesture_;
    double lastToggleAt_ = 0; // when a shake was last recognised
    Handle monitor_;
    Subscription cancellable_;
};

} // namespace lumo
