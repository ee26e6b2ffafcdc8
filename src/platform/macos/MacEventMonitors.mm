#import "platform/macos/MacEventMonitors.h"

#import <AppKit/AppKit.h>

#include <memory>
#include <optional>
#include <utility>

namespace lumo::macos {

static_assert(eventMask(EventType::keyDown) == NSEventMaskKeyDown);
static_assert(eventMask(EventType::flagsChanged) == NSEventMaskFlagsChanged);
static_assert(pointerMotionMask == (NSEventMaskMouseMoved | NSEventMaskLeftMouseDragged |
                                    NSEventMaskRightMouseDragged | NSEventMaskOtherMouseDragged));
static_assert(modifierFlag::capsLock == NSEventModifierFlagCapsLock);
static_assert(modifierFlag::shift == NSEventModifierFlagShift);
static_assert(modifierFlag::control == NSEventModifierFlagControl);
static_assert(modifierFlag::option == NSEventModifierFlagOption);
static_assert(modifierFlag::command == NSEventModifierFlagCommand);
static_assert(modifierFlag::deviceIndependent == NSEventModifierFlagDeviceIndependentFlagsMask);

namespace {

// Absent for kinds without a monitor. Key events have no deltas and pointer events no key
// code: asking for them raises an exception.
std::optional<InputEvent> inputEvent(NSEvent *event) {
    InputEvent input;
    input.type = static_cast<EventType>(event.type);
    input.modifierFlags = static_cast<std::uint32_t>(event.modifierFlags);
    switch (input.type) {
    case EventType::mouseMoved:
    case EventType::leftMouseDragged:
    case EventType::rightMouseDragged:
    case EventType::otherMouseDragged:
        input.deltaX = event.deltaX;
        input.deltaY = event.deltaY;
        return input;
    case EventType::keyDown:
    case EventType::flagsChanged:
        input.keyCode = event.keyCode;
        return input;
    }
    return std::nullopt;
}

// Asking for it raises an exception for other kinds.
bool isRepeat(NSEvent *event) {
    return static_cast<EventType>(event.type) == EventType::keyDown && [event isARepeat];
}

using GlobalHandler = std::function<void(const InputEvent &)>;

// Ends the monitor, and with what it holds the calls of a handler that may be running right now.
Handle removal(id monitor, std::shared_ptr<void> live) {
    if (monitor == nil) {
        return {};
    }
    return Handle([monitor, live]() mutable {
        [NSEvent removeMonitor:monitor];
        live.reset();
    });
}

Handle handLocalEventsTo(const std::shared_ptr<LocalMonitors> &monitors) {
    constexpr EventMask all =
        pointerMotionMask | eventMask(EventType::keyDown) | eventMask(EventType::flagsChanged);
    const std::weak_ptr<LocalMonitors> target = monitors;
    id monitor = [NSEvent addLocalMonitorForEventsMatchingMask:all
                                                       handler:^NSEvent *(NSEvent *event) {
                                                           const auto local = target.lock();
                                                           const auto input = inputEvent(event);
                                                           const bool swallows =
                                                               local && input &&
                                                               local->send(*input, isRepeat(event));
                                                           return swallows ? nil : event;
                                                       }];
    return removal(monitor, monitors);
}

} // namespace

MacEventMonitors::MacEventMonitors()
    : local_(std::make_shared<LocalMonitors>())
    , localEvents_(handLocalEventsTo(local_)) {
}

Handle MacEventMonitors::addGlobalMonitor(EventMask mask,
                                          std::function<void(const InputEvent &)> handler) {
    auto live = std::make_shared<GlobalHandler>(std::move(handler));
    const std::weak_ptr<GlobalHandler> target = live;
    id monitor = [NSEvent addGlobalMonitorForEventsMatchingMask:mask
                                                        handler:^(NSEvent *event) {
                                                            const auto call = target.lock();
                                                            const auto input = inputEvent(event);
                                                            if (call && input && !isRepeat(event)) {
                                                                (*call)(*input);
                                                            }
                                                        }];
    return removal(monitor, std::move(live));
}

Handle MacEventMonitors::addLocalMonitor(EventMask mask,
                                         std::function<bool(const InputEvent &)> handler) {
    return local_->add(mask, std::move(handler));
}

} // namespace lumo::macos
