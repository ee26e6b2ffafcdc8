#include "platform/wayland/sway/SwayHotKeys.h"

#include "platform/freedesktop/KeyPositions.h"
#include "platform/wayland/sway/SwayConnection.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

namespace lumo::wayland::sway {

namespace {

using nlohmann::json;

std::string keysOf(std::uint32_t keycode, std::uint32_t modifiers) {
    static constexpr std::array<std::pair<std::uint32_t, const char *>, 4> names = {{
        {hotKeyModifier::command, "Mod4+"},
        {hotKeyModifier::option, "Mod1+"},
        {hotKeyModifier::control, "Control+"},
        {hotKeyModifier::shift, "Shift+"},
    }};
    std::string keys;
    for (const auto &[modifier, name] : names) {
        if ((modifiers & modifier) != 0) {
            keys += name;
        }
    }
    return keys + std::to_string(keycode);
}

std::string commandOf(std::uint64_t serial, HotKeyEventKind kind) {
    return "nop lumo " + std::to_string(serial) +
           (kind == HotKeyEventKind::pressed ? " pressed" : " released");
}

bool hasSucceeded(const std::string &reply) {
    const auto results = json::parse(reply, nullptr, false);
    return results.is_array() && std::ranges::all_of(results, [](const json &result) {
               return result.is_object() && result.value("success", false);
           });
}

} // namespace

SwayHotKeys::SwayHotKeys(SwayConnection &connection)
    : connection_(connection)
    , events_(connection.onEvent([this](const auto &event) { handle(event); })) {
}

SwayHotKeys::~SwayHotKeys() {
    for (const auto &hotKey : hotKeys_) {
        unbind(hotKey);
    }
}

Handle SwayHotKeys::installEventHandler(std::function<void(const HotKeyEvent &)> handler) {
    return triggered_.subscribe(std::move(handler));
}

Handle SwayHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                   std::function<void(HotKeyStatus)> outcome) {
    const auto keycode = freedesktop::keycodeOfVirtualKey(keyCode);
    if (!keycode) {
        outcome(HotKeyStatus::invalidParameter);
        return {};
    }
    auto keys = keysOf(*keycode, modifiers);
    if (std::ranges::find(hotKeys_, keys, &HotKey::keys) != hotKeys_.end()) {
        outcome(HotKeyStatus::alreadyTaken);
        return {};
    }
    auto &hotKey = hotKeys_.emplace_back();
    hotKey.keys = std::move(keys);
    hotKey.id = id;
    hotKey.serial = nextSerial_++;
    hotKey.outcome = std::move(outcome);
    bind(hotKey);
    return Handle(hotKey.lifetime.guard([this, &hotKey] { unregister(hotKey); }));
}

void SwayHotKeys::bind(HotKey &hotKey) {
    const auto command = "bindcode --no-warn " + hotKey.keys + ' ' +
                         commandOf(hotKey.serial, HotKeyEventKind::pressed) +
                         "; bindcode --no-warn --release " + hotKey.keys + ' ' +
                         commandOf(hotKey.serial, HotKeyEventKind::released);
    connection_.request(MessageType::runCommand, command,
                        hotKey.lifetime.guard([&hotKey](const std::string &reply) {
                            const auto outcome = hotKey.outcome; // which may unregister it
                            outcome(hasSucceeded(reply) ? HotKeyStatus::success
                                                        : HotKeyStatus::invalidParameter);
                        }));
}

void SwayHotKeys::unbind(const HotKey &hotKey) {
    connection_.run("unbindcode " + hotKey.keys + "; unbindcode --release " + hotKey.keys);
}

void SwayHotKeys::unregister(HotKey &hotKey) {
    const auto id = hotKey.id;
    const bool wasDown = hotKey.isDown;
    unbind(hotKey);
    hotKeys_.remove_if([&hotKey](const HotKey &each) { return &each == &hotKey; });
    if (wasDown) {
        triggered_.emit({id, HotKeyEventKind::released});
    }
}

void SwayHotKeys::handle(const Message &event) {
    if (event.type != MessageType::bindingEvent && event.type != MessageType::workspaceEvent) {
        return;
    }
    const auto content = json::parse(event.body, nullptr, false);
    if (!content.is_object()) {
        return;
    }
    if (event.type == MessageType::bindingEvent) {
        trigger(content.value("/binding/command"_json_pointer, std::string()));
    } else if (content.value("change", std::string()) == "reload") {
        for (auto &hotKey : hotKeys_) {
            bind(hotKey);
        }
    }
}

void SwayHotKeys::trigger(const std::string &command) {
    for (auto &hotKey : hotKeys_) {
        for (const auto kind : {HotKeyEventKind::pressed, HotKeyEventKind::released}) {
            if (command == commandOf(hotKey.serial, kind)) {
                hotKey.isDown = kind == HotKeyEventKind::pressed;
                triggered_.emit({hotKey.id, kind});
                return; // what was told may have changed the list
            }
        }
    }
}

} // namespace lumo::wayland::sway
