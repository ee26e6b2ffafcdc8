#include "platform/wayland/kwin/KWinHotKeys.h"

#include "platform/freedesktop/KeyPositions.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "platform/freedesktop/SessionBus.h"
#include "platform/wayland/client/WaylandKeyboard.h"
#include "platform/wayland/kwin/BusObject.h"
#include "platform/wayland/kwin/QtKeys.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace lumo::wayland::kwin {

namespace {

// NOLINTNEXTLINE(cert-err58-cpp): without memory for that, nothing starts
const BusObject service = {"org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel"};

constexpr const char *component = freedesktop::program::identifier;
constexpr const char *componentPath = "/component/app_lumo_Lumo"; // that the service makes of it
constexpr const char *componentInterface = "org.kde.kglobalaccel.Component";

// Of setShortcut: the keys are to be in force, whatever was in force for the action before.
constexpr unsigned setPresent = 2;
constexpr unsigned noAutoloading = 4;

// What the system's settings call the hot keys of this program.
const char *titleOf(const HotKeyID &id) {
    static constexpr std::array<std::pair<std::string_view, const char *>, 4> titles = {{
        {"LUMT", "Turn Lumo on or off"},
        {"LUMP", "Peek"},
        {"LUMC", "Set the Cover App"},
        {"LUME", "Emergency stop"},
    }};
    for (const auto &[signature, title] : titles) {
        std::uint32_t code = 0;
        for (const char character : signature) {
            code = code << 8U | static_cast<std::uint8_t>(character);
        }
        if (code == id.signature) {
            return title;
        }
    }
    return freedesktop::program::name;
}

GVariant *actionId(const std::string &action, const HotKeyID &id) {
    const std::array<const char *, 4> parts = {component, action.c_str(),
                                               freedesktop::program::name, titleOf(id)};
    return g_variant_new_strv(parts.data(), parts.size());
}

// What the service's reply to a claim of so many keys comes to: for one that another action has it
// gives none, or 0.
HotKeyStatus statusOf(GVariant *reply, std::size_t claimed) {
    if (reply == nullptr || g_variant_is_of_type(reply, G_VARIANT_TYPE("(ai)")) == FALSE) {
        return HotKeyStatus::invalidParameter;
    }
    const freedesktop::GlibPointer<GVariant> keys(g_variant_get_child_value(reply, 0));
    std::size_t given = 0;
    for (gsize i = 0; i < g_variant_n_children(keys.get()); ++i) {
        int key = 0;
        g_variant_get_child(keys.get(), i, "i", &key);
        given += key != 0 ? 1 : 0;
    }
    return given >= claimed ? HotKeyStatus::success : HotKeyStatus::alreadyTaken;
}

} // namespace

KWinHotKeys::KWinHotKeys(freedesktop::SessionBus &bus, const WaylandKeyboard &keyboard)
    : bus_(bus)
    , keyboard_(keyboard)
    , busChanges_(bus.onChange([this] { connect(); })) {
    connect();
}

KWinHotKeys::~KWinHotKeys() {
    for (const auto &hotKey : hotKeys_) {
        release(hotKey);
    }
    if (auto *connection = bus_.connection()) {
        g_dbus_connection_flush_sync(connection, nullptr, nullptr);
    }
}

Handle KWinHotKeys::installEventHandler(std::function<void(const HotKeyEvent &)> handler) {
    return triggered_.subscribe(std::move(handler));
}

void KWinHotKeys::connect() {
    signals_.reset();
    auto *connection = bus_.connection();
    if (connection == nullptr) {
        return;
    }
    const auto arrived = +[](GDBusConnection *, const char *, const char *, const char *,
                             const char *signal, GVariant *arguments, gpointer self) {
        const std::string_view name = signal;
        const bool isPress = name == "globalShortcutPressed";
        if ((isPress || name == "globalShortcutReleased") &&
            g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssx)")) != FALSE) {
            const char *action = nullptr;
            g_variant_get_child(arguments, 1, "&s", &action);
            static_cast<KWinHotKeys *>(self)->trigger(action, isPress ? HotKeyEventKind::pressed
                                                                      : HotKeyEventKind::released);
        }
    };
    const auto subscription = g_dbus_connection_signal_subscribe(
        connection, service.service, componentInterface, nullptr, componentPath, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, arrived, this, nullptr);
    signals_ = Handle([connection, subscription] {
        g_dbus_connection_signal_unsubscribe(connection, subscription);
    });
    for (auto &hotKey : hotKeys_) {
        claim(hotKey);
    }
}

Handle KWinHotKeys::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                   std::function<void(HotKeyStatus)> outcome) {
    auto keys = keysOf(keyCode, modifiers);
    if (keys.empty()) {
        outcome(HotKeyStatus::invalidParameter);
        return {};
    }
    auto &hotKey = hotKeys_.emplace_back();
    hotKey.keys = std::move(keys);
    hotKey.id = id;
    hotKey.action = std::to_string(nextAction_++);
    hotKey.outcome = std::move(outcome);
    if (freedesktop::sessionBusAddress().empty()) {
        hotKey.outcome(HotKeyStatus::invalidParameter);
    } else if (bus_.connection() != nullptr) {
        claim(hotKey);
    }
    return Handle(hotKey.lifetime.guard([this, &hotKey] { unregister(hotKey); }));
}

// KWin goes by the layout that is in force when the key is pressed.
std::vector<std::int32_t> KWinHotKeys::keysOf(std::uint32_t keyCode,
                                              std::uint32_t modifiers) const {
    std::vector<std::int32_t> keys;
    if (const auto keycode = freedesktop::keycodeOfVirtualKey(keyCode)) {
        for (const auto &[symbol, shifted] : keyboard_.symbolsByLayout(*keycode)) {
            for (const auto key : qtKeys(symbol, shifted, modifiers)) {
                if (std::ranges::find(keys, key) == keys.end()) {
                    keys.push_back(key);
                }
            }
        }
    }
    return keys;
}

void KWinHotKeys::claim(HotKey &hotKey) {
    auto *connection = bus_.connection();
    service.tell(connection, "doRegister",
                 g_variant_new("(@as)", actionId(hotKey.action, hotKey.id)));
    auto *keys = g_variant_new_fixed_array(G_VARIANT_TYPE_INT32, hotKey.keys.data(),
                                           hotKey.keys.size(), sizeof hotKey.keys.front());
    service.call(hotKey.calls, connection, "setShortcut",
                 g_variant_new("(@as@aiu)", actionId(hotKey.action, hotKey.id), keys,
                               setPresent | noAutoloading),
                 [this, &hotKey](GVariant *reply) {
                     const auto status = statusOf(reply, hotKey.keys.size());
                     if (status != HotKeyStatus::success) {
                         release(hotKey);
                     }
                     const auto outcome = hotKey.outcome; // which may unregister it
                     outcome(status);
                 });
}

void KWinHotKeys::release(const HotKey &hotKey) {
    if (auto *connection = bus_.connection()) {
        service.tell(connection, "unregister",
                     g_variant_new("(ss)", component, hotKey.action.c_str()));
    }
}

void KWinHotKeys::unregister(HotKey &hotKey) {
    const auto id = hotKey.id;
    const bool wasDown = hotKey.isDown;
    release(hotKey);
    hotKeys_.remove_if([&hotKey](const HotKey &each) { return &each == &hotKey; });
    if (wasDown) {
        triggered_.emit({id, HotKeyEventKind::released});
    }
}

void KWinHotKeys::trigger(const std::string &action, HotKeyEventKind kind) {
    const auto found = std::ranges::find(hotKeys_, action, &HotKey::action);
    if (found != hotKeys_.end()) {
        found->isDown = kind == HotKeyEventKind::pressed;
        triggered_.emit({found->id, kind});
    }
}

} // namespace lumo::wayland::kwin
