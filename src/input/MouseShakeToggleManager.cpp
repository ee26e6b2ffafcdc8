#include "input/MouseShakeToggleManager.h"

#include "platform/EventMonitors.h"
#include "platform/MainLoop.h"
#include "settings/SettingsStore.h"

#include <array>
#include <cmath>
#include <utility>

namespace lumo {

namespace {

constexpr double leastMovement = 1.0; // points; less is no movement at all

constexpr std::array<std::pair<std::string_view, std::uint32_t>, 4> modifiers = {{
    {"Shift", modifierFlag::shift},
    {"Option", modifierFlag::option},
    {"Command", modifierFlag::command},
    {"Control", modifierFlag::control},
}};

} // namespace

MouseShakeToggleManager::MouseShakeToggleManager(const Platform &platform,
                                                 SettingsStore &settingsStore)
    : eventMonitors_(platform.eventMonitors)
    , mainLoop_(platform.mainLoop)
    , settingsStore_(settingsStore) {
    setupSettingsBinding();
}

void MouseShakeToggleManager::setupSettingsBinding() {
    // An assignment of the value that it had is none.
    cancellable_ = settingsStore_.mouseShakeToggleEnabled.subscribe(
        [this, last = std::optional<bool>()](bool enabled) mutable {
            if (std::exchange(last, enabled) != enabled) {
                enabled ? startListening() : stopListening();
            }
        });
}

void MouseShakeToggleManager::startListening() {
    if (isListening.value()) {
        return;
    }
    gesture_ = {};
    monitor_ = eventMonitors_.addGlobalMonitor(
        pointerMotionMask, [this](const InputEvent &event) { handleMouseEvent(event); });
    isListening.set(true);
}

void MouseShakeToggleManager::stopListening() {
    monitor_.reset();
    gesture_ = {};
    isListening.set(false);
}

void MouseShakeToggleManager::handleMouseEvent(const InputEvent &event) {
    if (!settingsStore_.mouseShakeToggleEnabled.value()) {
        return;
    }
    const double now = mainLoop_.now();
    if (now - lastToggleAt_ < cooldownDuration || std::abs(event.deltaX) < leastMovement) {
        return;
    }
    if (gesture_.add(event.deltaX, now)) {
        lastToggleAt_ = now;
        gesture_ = {};
        triggerAction(event.modifierFlags);
    }
}

bool MouseShakeToggleManager::Gesture::add(double dx, double now) {
    if (firstStrokeAt > 0 &&
        (now - firstStrokeAt > maxGestureDuration || now - lastStrokeAt > maxPauseBetweenStrokes)) {
        *this = {};
    }
    accumulatedX += dx;
    if (std::abs(accumulatedX) < minStrokeDistance) {
        return false;
    }
    const int direction = accumulatedX > 0 ? 1 : -1;
    accumulatedX = 0;
    lastStrokeAt = now;
    if (strokeCount == 0) {
        firstStrokeAt = now;
    }
    if (direction != lastDirection) {
        ++strokeCount;
        lastDirection = direction;
    }
    return strokeCount >= requiredStrokeCount;
}

void MouseShakeToggleManager::triggerAction(std::uint32_t flags) {
    if (const auto action = actionFor(flags); action && onShakeAction) {
        onShakeAction(*action);
    }
}

std::optional<MouseShakeToggleManager::Action>
MouseShakeToggleManager::actionFor(std::uint32_t flags) const {
    const auto &store = settingsStore_;
    const bool reveals = store.shakeToReveal.value();
    if (reveals && modifierMatches(flags, store.shakePeekModifier.value())) {
        return Action::peek;
    }
    if (store.shakeToggleActionEnabled.value()) {
        // Whatever shakeToggleModifier says: a shake that does not peek toggles.
        return Action::toggle;
    }
    return reveals ? std::optional(Action::peek) : std::nullopt;
}

bool MouseShakeToggleManager::modifierMatches(std::uint32_t flags, std::string_view configured) {
    for (const auto &[name, flag] : modifiers) {
        if (name == configured) {
            return (flags & flag) != 0;
        }
    }
    return true;
}

} // namespace lumo
