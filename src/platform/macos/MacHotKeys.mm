#import "platform/macos/MacHotKeys.h"

#import <Carbon/Carbon.h>

#include <array>
#include <memory>
#include <optional>
#include <utility>

namespace lumo::macos {

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

std::optional<HotKeyEventKind> kindOf(EventRef event) {
    switch (GetEventKind(event)) {
    case kEventHotKeyPressed:
        return HotKeyEventKind::pressed;
    case kEventHotKeyReleased:
        return HotKeyEventKind::released;
    default:
        return std::nullopt;
    }
}

// The event goes no further, whatever it was.
OSStatus handleHotKeyEvent(EventHandlerCallRef, EventRef event, void *userData) {
    const auto kind = event != nullptr ? kindOf(event) : std::nullopt;
    if (kind && userData != nullptr) {
        (*static_cast<Handler *>(userData))({.id = idOf(event), .kind = *kind});
    }
    return noErr;
}

} // namespace

MacHotKeys::MacHotKeys(const Log &log)
    : log_(log) {
}

Handle MacHotKeys::installEventHandler(std::function<void(const HotKeyEvent &)> handler) {
    constexpr std::array<EventTypeSpec, 2> kinds{
        EventTypeSpec{kEventClassKeyboard, kEventHotKeyPressed},
        EventTypeSpec{kEventClassKeyboard, kEventHotKeyReleased}};
    const auto call = std::make_shared<Handler>(std::move(handler));
    EventHandlerRef installed = nullptr;
    const OSStatus status = InstallEventHandler(GetEventDispatcherTarget(), handleHotKeyEvent,
                                                kinds.size(), kinds.data(), call.get(), &installed);
    if (status != noErr) {
        log_.print("[Lumo] Hotkey handler installation failed, " +
                   describe(static_cast<HotKeyStatus>(status)));
        return {};
    }
    return Handle([installed, call] { RemoveEventHandler(installed); });
}

Handle MacHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                  std::function<void(HotKeyStatus)> outcome) {
    EventHotKeyRef registered = nullptr;
    const OSStatus status = RegisterEventHotKey(keyCode, modifiers, {id.signature, id.number},
                                                GetEventDispatcherTarget(), 0, &registered);
    outcome(static_cast<HotKeyStatus>(status));
    return status == noErr ? Handle([registered] { UnregisterEventHotKey(registered); }) : Handle();
}

} // namespace lumo::macos
