#include "platform/wayland/sway/SwayHotKeys.h"

#include "platform/freedesktop/KeyPositions.h"
#include "platform/wayland/client/WaylandKeyboard.h"
#include "platform/wayland/sway/SwayBindings.h"
#include "platform/wayland/sway/SwayConnection.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

namespace lumo::wayland::sway {

namespace {

using nlohmann::json;

// By sway's names.
std::set<std::string> modifierNames(std::uint32_t modifiers) {
    static constexpr std::array<std::pair<std::uint32_t, const char *>, 4> table = {{
        {hotKeyModifier::command, "Mod4"},
        {hotKeyModifier::option, "Mod1"},
        {hotKeyModifier::control, "Control"},
        {hotKeyModifier::shift, "Shift"},
    }};
    std::set<std::string> names;
    for (const auto &[modifier, name] : table) {
        if ((modifiers & modifier) != 0) {
            names.insert(name);
        }
    }
    return names;
}

// As a binding writes them.
std::string keysOf(std::uint32_t keycode, std::uint32_t modifiers) {
    std::string keys;
    for (const auto &name : modifierNames(modifiers)) {
        keys += name + '+';
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

SwayHotKeys::SwayHotKeys(SwayConnection &connection, const WaylandKeyboard &keyboard)
    : connection_(connection)
    , keyboard_(keyboard)
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
    if (std::ranges::any_of(hotKeys_, [&](const HotKey &hotKey) {
            return hotKey.keycode == *keycode && hotKey.modifiers == modifiers;
        })) {
        outcome(HotKeyStatus::alreadyTaken);
        return {};
    }
    auto &hotKey = hotKeys_.emplace_back();
    hotKey.keycode = *keycode;
    hotKey.modifiers = modifiers;
    hotKey.id = id;
    hotKey.serial = nextSerial_++;
    hotKey.outcome = std::move(outcome);
    bindUnlessTaken(hotKey);
    return Handle(hotKey.lifetime.guard([this, &hotKey] { unregister(hotKey); }));
}

// A new binding would silently replace one of the user's.
void SwayHotKeys::bindUnlessTaken(HotKey &hotKey) {
    connection_.request(MessageType::getConfig, {},
                        hotKey.lifetime.guard([this, &hotKey](const std::string &reply) {
                            const auto answer = json::parse(reply, nullptr, false);
                            if (answer.is_object() &&
                                isTaken(hotKey, answer.value("config", std::string()))) {
                                const auto outcome = hotKey.outcome; // which may unregister it
                                outcome(HotKeyStatus::alreadyTaken);
                            } else {
                                bind(hotKey);
                            }
                        }));
}

bool SwayHotKeys::isTaken(const HotKey &hotKey, const std::string &configuration) const {
    const auto modifiers = modifierNames(hotKey.modifiers);
    const auto code = std::to_string(hotKey.keycode);
    const auto all = bindingsOf(withIncludes(configuration, connection_.configurationFolder()));
    return std::ranges::any_of(all, [&](const Binding &binding) {
        return binding.mode == "default" && binding.modifiers == modifiers &&
               (binding.isKeycode ? binding.key == code
                                  : keyboard_.hasSymbol(hotKey.keycode, binding.key));
    });
}

void SwayHotKeys::bind(HotKey &hotKey) {
    const auto keys = keysOf(hotKey.keycode, hotKey.modifiers);
    hotKey.isBound = true;
    const auto command = "bindcode --no-warn " + keys + ' ' +
                         commandOf(hotKey.serial, HotKeyEventKind::pressed) +
                         "; bindcode --no-warn --release " + keys + ' ' +
                         commandOf(hotKey.serial, HotKeyEventKind::released);
    connection_.request(MessageType::runCommand, command,
                        hotKey.lifetime.guard([&hotKey](const std::string &reply) {
                            const auto outcome = hotKey.outcome; // which may unregister it
                            outcome(hasSucceeded(reply) ? HotKeyStatus::success
                                                        : HotKeyStatus::invalidParameter);
                        }));
}

void SwayHotKeys::unbind(const HotKey &hotKey) {
    if (!hotKey.isBound) {
        return;
    }
    const auto keys = keysOf(hotKey.keycode, hotKey.modifiers);
    connection_.run("unbindcode " + keys + "; unbindcode --release " + keys);
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
            hotKey.isBound = false;
            bindUnlessTaken(hotKey);
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
