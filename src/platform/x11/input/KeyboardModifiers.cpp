#include "platform/x11/input/KeyboardModifiers.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"

#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t mappingBit = 1;

} // namespace

KeyboardModifiers::KeyboardModifiers(Connection &connection)
    : connection_(connection)
    , replies_(connection) {
    auto &events = connection.events();
    const auto readAnew = [this](const auto &) { reads_.want(mappingBit); };
    events_ = {events.on(event::mappingNotify,
                         [this](const auto &event) {
                             if (event.request != XCB_MAPPING_POINTER) {
                                 reads_.want(mappingBit);
                             }
                         }),
               events.on(event::keyboardMapNotify, readAnew),
               events.on(event::newKeyboardNotify, readAnew)};
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
    connection.dispatchUntil([this] { return reads_.isIdle(); });
}

Handle KeyboardModifiers::onChange(std::function<void()> observer) {
    return changes_.subscribe(std::move(observer));
}

Handle KeyboardModifiers::onKeymapChange(std::function<void()> observer) {
    return keymapChanges_.subscribe(std::move(observer));
}

void KeyboardModifiers::requestReads() {
    if (reads_.begin() == 0) {
        return;
    }
    replies_.add<xcb_get_modifier_mapping_reply_t>(
        xcb_get_modifier_mapping(connection_),
        [this](const xcb_get_modifier_mapping_reply_t *reply) {
            keymap_.modifierKeys.clear();
            if (reply != nullptr) {
                const auto *keys = xcb_get_modifier_mapping_keycodes(reply);
                keymap_.modifierKeys.assign(keys,
                                            keys + xcb_get_modifier_mapping_keycodes_length(reply));
            }
        });
    const auto first = connection_.setup().min_keycode;
    const auto count = static_cast<std::uint8_t>(connection_.setup().max_keycode - first + 1);
    replies_.add<xcb_get_keyboard_mapping_reply_t>(
        xcb_get_keyboard_mapping(connection_, first, count),
        [this](const xcb_get_keyboard_mapping_reply_t *reply) {
            reads_.finished(mappingBit);
            if (reply != nullptr && !keymap_.modifierKeys.empty()) {
                apply(reply);
            }
        });
}

void KeyboardModifiers::apply(const xcb_get_keyboard_mapping_reply_t *symbols) {
    const auto *first = xcb_get_keyboard_mapping_keysyms(symbols);
    keymap_.firstKeycode = connection_.setup().min_keycode;
    keymap_.symbolsPerKey = symbols->keysyms_per_keycode;
    keymap_.symbols.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(symbols));
    const auto bits = modifierBits(keymap_);
    if (std::exchange(bits_, bits) != bits) {
        changes_.emit();
    }
    keymapChanges_.emit();
}

} // namespace lumo::x11
