#include "platform/x11/input/X11Keyboard.h"

#include "platform/freedesktop/KeyNames.h"
#include "platform/freedesktop/KeyPositions.h"
#include "platform/x11/input/KeyboardModifiers.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"

#include <string>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t symbolsBit = 1;

} // namespace

X11Keyboard::X11Keyboard(Connection &connection, KeyboardModifiers &modifiers)
    : connection_(connection)
    , modifiers_(modifiers)
    , replies_(connection)
    , keymaps_(modifiers.onKeymapChange([this] { reads_.want(symbolsBit); }))
    , batches_(connection.onDispatched([this] { requestSymbols(); })) {
    if (connection.extensions().xkb) {
        followGroup();
    }
    reads_.want(symbolsBit);
    requestSymbols();
    connection.dispatchUntil([this] { return reads_.isIdle(); });
}

void X11Keyboard::followGroup() {
    xcb_xkb_select_events_details_t details{};
    details.affectState = XCB_XKB_STATE_PART_GROUP_STATE;
    details.stateDetails = XCB_XKB_STATE_PART_GROUP_STATE;
    xcb_xkb_select_events_aux(connection_, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_EVENT_TYPE_STATE_NOTIFY,
                              0, 0, 0, 0, &details);
    groups_ = connection_.events().on(event::keyboardStateNotify,
                                      [this](const auto &state) { setGroup(state.group); });
    replies_.add<xcb_xkb_get_state_reply_t>(xcb_xkb_get_state(connection_, XCB_XKB_ID_USE_CORE_KBD),
                                            [this](const xcb_xkb_get_state_reply_t *reply) {
                                                if (reply != nullptr) {
                                                    setGroup(reply->group);
                                                }
                                            });
}

void X11Keyboard::setGroup(std::uint8_t group) {
    if (std::exchange(group_, group) != group) {
        changed_.emit();
    }
}

void X11Keyboard::requestSymbols() {
    if (reads_.begin() == 0) {
        return;
    }
    if (!connection_.extensions().xkb) {
        symbols_ = KeySymbols(modifiers_.keymap());
        reads_.finished(symbolsBit);
        changed_.emit();
        return;
    }
    replies_.add<xcb_xkb_get_map_reply_t>(xcb_xkb_get_map(connection_, XCB_XKB_ID_USE_CORE_KBD,
                                                          XCB_XKB_MAP_PART_KEY_SYMS, 0, 0, 0, 0, 0,
                                                          0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0),
                                          [this](const xcb_xkb_get_map_reply_t *reply) {
                                              reads_.finished(symbolsBit);
                                              if (reply != nullptr) {
                                                  symbols_ = KeySymbols(*reply);
                                                  changed_.emit();
                                              }
                                          });
}

std::string X11Keyboard::keyName(std::int64_t keyCode) const {
    std::string name;
    if (std::in_range<std::uint32_t>(keyCode)) {
        if (const auto keycode =
                freedesktop::keycodeOfVirtualKey(static_cast<std::uint32_t>(keyCode))) {
            const auto levels = symbols_.of(*keycode, group_);
            name = freedesktop::keyNameOf(levels.plain, levels.shifted);
        }
    }
    return name.empty() ? "Key" + std::to_string(keyCode) : name;
}

Handle X11Keyboard::onNamesDidChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

} // namespace lumo::x11
