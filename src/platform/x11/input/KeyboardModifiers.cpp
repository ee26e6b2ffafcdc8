#include "platform/x11/input/KeyboardModifiers.h"

#include "platform/EventMonitors.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/XcbXkb.h"

#include <span>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr double longestStart = 2; // seconds
constexpr std::uint32_t mappingBit = 1;
constexpr unsigned modifierCount = 8; // of the core protocol

// From X11/keysymdef.h.
constexpr xcb_keysym_t numLockKeysym = 0xff7f;
constexpr xcb_keysym_t scrollLockKeysym = 0xff14;
constexpr xcb_keysym_t altLeftKeysym = 0xffe9;
constexpr xcb_keysym_t altRightKeysym = 0xffea;
constexpr xcb_keysym_t superLeftKeysym = 0xffeb;
constexpr xcb_keysym_t superRightKeysym = 0xffec;

// The modifiers in which each key of interest was found.
struct Found {
    std::uint16_t commandLeft = 0;
    std::uint16_t commandRight = 0;
    std::uint16_t optionLeft = 0;
    std::uint16_t optionRight = 0;
    std::uint16_t numLock = 0;
    std::uint16_t scrollLock = 0;

    // Only the first modifier that a key is in counts.
    void note(xcb_keysym_t keysym, std::uint16_t bit) {
        auto *const place = placeOf(keysym);
        if (place != nullptr && *place == 0) {
            *place = bit;
        }
    }

    std::uint16_t *placeOf(xcb_keysym_t keysym) {
        switch (keysym) {
        case superLeftKeysym:
            return &commandLeft;
        case superRightKeysym:
            return &commandRight;
        case altLeftKeysym:
            return &optionLeft;
        case altRightKeysym:
            return &optionRight;
        case numLockKeysym:
            return &numLock;
        case scrollLockKeysym:
            return &scrollLock;
        default:
            return nullptr;
        }
    }
};

} // namespace

KeyboardModifiers::KeyboardModifiers(Connection &connection)
    : connection_(connection)
    , replies_(connection) {
    events_ = connection.onEvent([this](const auto &event) { handle(event); });
    batches_ = connection.onDispatched([this] { requestReads(); });
    if (connection.extensions().xkb) {
        // A client that uses the keyboard extension gets no MappingNotify.
        constexpr std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
        constexpr std::uint16_t types =
            XCB_XKB_EVENT_TYPE_MAP_NOTIFY | XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY;
        xcb_xkb_select_events(connection, XCB_XKB_ID_USE_CORE_KBD, types, 0,
                              XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY, parts, parts, nullptr);
    }
    reads_.want(mappingBit);
    requestReads();
    connection.dispatchUntil([this] { return reads_.isIdle(); }, longestStart);
}

std::uint32_t KeyboardModifiers::flagsOf(std::uint32_t state) const {
    const auto flag = [state](std::uint32_t bit, std::uint32_t flagBit) {
        return (state & bit) != 0 ? flagBit : 0U;
    };
    return flag(XCB_MOD_MASK_SHIFT, modifierFlag::shift) |
           flag(XCB_MOD_MASK_CONTROL, modifierFlag::control) |
           flag(XCB_MOD_MASK_LOCK, modifierFlag::capsLock) |
           flag(bits_.option, modifierFlag::option) | flag(bits_.command, modifierFlag::command);
}

Handle KeyboardModifiers::onChange(std::function<void()> observer) {
    return changes_.subscribe(std::move(observer));
}

void KeyboardModifiers::handle(const xcb_generic_event_t &event) {
    const auto &extensions = connection_.extensions();
    bool hasChanged = false;
    if (event.response_type == XCB_MAPPING_NOTIFY) {
        hasChanged = reinterpret_cast<const xcb_mapping_notify_event_t &>(event).request !=
                     XCB_MAPPING_POINTER;
    } else if (extensions.xkb && event.response_type == extensions.xkbFirstEvent) {
        const auto type = reinterpret_cast<const xcb_xkb_map_notify_event_t &>(event).xkbType;
        hasChanged = type == XCB_XKB_MAP_NOTIFY || type == XCB_XKB_NEW_KEYBOARD_NOTIFY;
    }
    if (hasChanged) {
        reads_.want(mappingBit);
    }
}

void KeyboardModifiers::requestReads() {
    if (reads_.begin() == 0) {
        return;
    }
    replies_.add<xcb_get_modifier_mapping_reply_t>(
        xcb_get_modifier_mapping(connection_),
        [this](const xcb_get_modifier_mapping_reply_t *reply) {
            modifierKeys_.clear();
            if (reply != nullptr) {
                const auto *keys = xcb_get_modifier_mapping_keycodes(reply);
                modifierKeys_.assign(keys, keys + xcb_get_modifier_mapping_keycodes_length(reply));
            }
        });
    const auto first = connection_.setup().min_keycode;
    const auto count = static_cast<std::uint8_t>(connection_.setup().max_keycode - first + 1);
    replies_.add<xcb_get_keyboard_mapping_reply_t>(
        xcb_get_keyboard_mapping(connection_, first, count),
        [this](const xcb_get_keyboard_mapping_reply_t *reply) {
            reads_.finished(mappingBit);
            if (reply != nullptr && !modifierKeys_.empty()) {
                apply(reply);
            }
        });
}

void KeyboardModifiers::apply(const xcb_get_keyboard_mapping_reply_t *keysyms) {
    const auto first = connection_.setup().min_keycode;
    const std::span symbols(
        xcb_get_keyboard_mapping_keysyms(keysyms),
        static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(keysyms)));
    const std::size_t columns = keysyms->keysyms_per_keycode;
    const auto keysPerModifier = modifierKeys_.size() / modifierCount;
    Found found;
    for (std::size_t column = 0; column < columns; ++column) {
        for (std::size_t index = 0; index < modifierKeys_.size(); ++index) {
            if (modifierKeys_[index] >= first) {
                const auto row = static_cast<std::size_t>(modifierKeys_[index] - first);
                found.note(symbols[row * columns + column],
                           static_cast<std::uint16_t>(1U << (index / keysPerModifier)));
            }
        }
    }
    const auto either = [](std::uint16_t left, std::uint16_t right) {
        return left != 0 ? left : right;
    };
    const ModifierBits bits{either(found.commandLeft, found.commandRight),
                            either(found.optionLeft, found.optionRight), found.numLock,
                            found.scrollLock};
    if (std::exchange(bits_, bits) != bits) {
        changes_.emit();
    }
}

} // namespace lumo::x11
