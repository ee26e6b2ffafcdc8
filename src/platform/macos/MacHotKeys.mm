#import "platform/macos/MacHotKeys.h"

#import <Carbon/Carbon.h>

#include <array>
#include <memory>
#include <utility>

namespace lumo::macos {

static_assert(hotKeyEventKind::pressed == kEventHotKeyPressed);
static_assert(hotKeyEventKind::released == kEventHotKeyReleased);
static_assert(hotKeyModifier::command == cmdKey);
static_assert(hotKeyModifier::shift == shiftKey);
static_assert(hotKeyModifier::option == optionKey);
static_assert(hotKeyModifier::control == controlKey);

namespace {

using Handler = std::function<void(const HotKeyEvent &)>;

std::optional<HotKeyID> idOf(EventRef event) {
    EventHotKeyID id{};
    const OSStatus status = GetEventParameter(event, kEventParamDirectObject, typeEventHotKeyID,
                                              nullptr, sizeof(id), nullptr, &id);
    return status == noErr ? std::optional(HotKeyID{id.signature, id.id}) : std::nullopt;
}

// The event goes no further, whatever it was.
OSStatus handleHotKeyEvent(EventHandlerCallRef, EventRef event, void *userData) {
    if (event != nullptr && userData != nullptr) {
        (*static_cast<Handler *>(userData))({.id = idOf(event), .kind = GetEventKind(event)});
    }
    return noErr;
}

} // namespace

Handle MacHotKeys::installEventHandler(std::function<void(const HotKeyEvent &)> handler) {
    constexpr std::array<EventTypeSpec, 2> kinds{
        EventTypeSpec{kEventClassKeyboard, kEventHotKeyPressed},
        EventTypeSpec{kEventClassKeyboard, kEventHotKeyReleased}};
    const auto call = std::make_shared<Handler>(std::move(handler));
    EventHandlerRef installed = nullptr;
    const OSStatus status = InstallEventHandler(GetEventDispatcherTarget(), handleHotKeyEvent,
                                                kinds.size(), kinds.data(), call.get(), &installed);
    if (status != noErr) {
        return {};
    }
    return Handle([installed, call] { RemoveEventHandler(installed); });
}

HotKeyRegistration MacHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                              HotKeyID id) {
    EventHotKeyRef registered = nullptr;
    const OSStatus status = RegisterEventHotKey(keyCode, modifiers, {id.signature, id.number},
                                                GetEventDispatcherTarget(), 0, &registered);
    if (status != noErr) {
        return {.status = status, .handle = {}};
    }
    return {.status = hotKeyStatus::success,
            .handle = Handle([registered] { UnregisterEventHotKey(registered); })};
}

} // namespace lumo::macos
