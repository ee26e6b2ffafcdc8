#include "input/ShortcutRecorder.h"

#include "platform/EventMonitors.h"
#include "platform/ShortcutModifiers.h"

namespace lumo {

namespace {

// The shortcut modifier mask of an event's modifier flags; lock and function keys have no part.
std::int64_t shortcutMask(std::uint32_t flags) {
    const auto bit = [flags](std::uint32_t flag, std::int64_t modifier) {
        return (flags & flag) != 0 ? modifier : std::int64_t{0};
    };
    return bit(modifierFlag::command, shortcutModifier::command) |
           bit(modifierFlag::option, shortcutModifier::option) |
           bit(modifierFlag::control, shortcutModifier::control) |
           bit(modifierFlag::shift, shortcutModifier::shift);
}

} // namespace

ShortcutRecorder::ShortcutRecorder(const Platform &platform, Setting<std::int64_t> &keyCode,
                                   Setting<std::int64_t> &modifiers)
    : eventMonitors_(platform.eventMonitors)
    , keyCode_(keyCode)
    , modifiers_(modifiers)
    , recording_(isRecording.subscribeToChanges([this](bool isOn) {
        stopMonitoring();
        if (isOn) {
            startMonitoring();
        }
    })) {
}

void ShortcutRecorder::startMonitoring() {
    globalMonitor_ = eventMonitors_.addGlobalMonitor(eventMask(EventType::flagsChanged),
                                                     [](const InputEvent &) {});
    localMonitor_ = eventMonitors_.addLocalMonitor(eventMask(EventType::keyDown),
                                                   [this](const InputEvent &event) {
                                                       if (!isRecording.value()) {
                                                           return false;
                                                       }
                                                       recordKeyEvent(event);
                                                       return true;
                                                   });
}

void ShortcutRecorder::stopMonitoring() {
    globalMonitor_.reset();
    localMonitor_.reset();
}

void ShortcutRecorder::recordKeyEvent(const InputEvent &event) {
    const auto mask = shortcutMask(event.modifierFlags);
    if (mask == 0) {
        return;
    }
    keyCode_.set(event.keyCode);
    modifiers_.set(mask);
    isRecording.set(false);
}

} // namespace lumo
