#pragma once

#include "platform/x11/server/EventRouter.h"
#include "platform/x11/server/XcbXkb.h"

#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/shape.h>
#include <xcb/xcb.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <cstddef>

// The kinds of events to ask an EventRouter for. Where an event names two windows, it is about the
// one that something happened to, not the one whose events were selected.
namespace lumo::x11::event {

inline constexpr EventKind<xcb_key_press_event_t> keyPress = {
    EventSource::core, XCB_KEY_PRESS, offsetof(xcb_key_press_event_t, event)};
inline constexpr EventKind<xcb_key_release_event_t> keyRelease = {
    EventSource::core, XCB_KEY_RELEASE, offsetof(xcb_key_release_event_t, event)};
inline constexpr EventKind<xcb_button_press_event_t> buttonPress = {
    EventSource::core, XCB_BUTTON_PRESS, offsetof(xcb_button_press_event_t, event)};
inline constexpr EventKind<xcb_button_release_event_t> buttonRelease = {
    EventSource::core, XCB_BUTTON_RELEASE, offsetof(xcb_button_release_event_t, event)};
inline constexpr EventKind<xcb_enter_notify_event_t> coreEnter = {
    EventSource::core, XCB_ENTER_NOTIFY, offsetof(xcb_enter_notify_event_t, event)};
inline constexpr EventKind<xcb_leave_notify_event_t> coreLeave = {
    EventSource::core, XCB_LEAVE_NOTIFY, offsetof(xcb_leave_notify_event_t, event)};
inline constexpr EventKind<xcb_motion_notify_event_t> motionNotify = {
    EventSource::core, XCB_MOTION_NOTIFY, offsetof(xcb_motion_notify_event_t, event)};
inline constexpr EventKind<xcb_focus_in_event_t> coreFocusIn = {
    EventSource::core, XCB_FOCUS_IN, offsetof(xcb_focus_in_event_t, event)};
inline constexpr EventKind<xcb_focus_out_event_t> coreFocusOut = {
    EventSource::core, XCB_FOCUS_OUT, offsetof(xcb_focus_out_event_t, event)};
inline constexpr EventKind<xcb_expose_event_t> expose = {EventSource::core, XCB_EXPOSE,
                                                         offsetof(xcb_expose_event_t, window)};
inline constexpr EventKind<xcb_create_notify_event_t> createNotify = {
    EventSource::core, XCB_CREATE_NOTIFY, offsetof(xcb_create_notify_event_t, window)};
inline constexpr EventKind<xcb_destroy_notify_event_t> destroyNotify = {
    EventSource::core, XCB_DESTROY_NOTIFY, offsetof(xcb_destroy_notify_event_t, window)};
inline constexpr EventKind<xcb_unmap_notify_event_t> unmapNotify = {
    EventSource::core, XCB_UNMAP_NOTIFY, offsetof(xcb_unmap_notify_event_t, window)};
inline constexpr EventKind<xcb_map_notify_event_t> mapNotify = {
    EventSource::core, XCB_MAP_NOTIFY, offsetof(xcb_map_notify_event_t, window)};
inline constexpr EventKind<xcb_reparent_notify_event_t> reparentNotify = {
    EventSource::core, XCB_REPARENT_NOTIFY, offsetof(xcb_reparent_notify_event_t, window)};
inline constexpr EventKind<xcb_configure_notify_event_t> configureNotify = {
    EventSource::core, XCB_CONFIGURE_NOTIFY, offsetof(xcb_configure_notify_event_t, window)};
inline constexpr EventKind<xcb_gravity_notify_event_t> gravityNotify = {
    EventSource::core, XCB_GRAVITY_NOTIFY, offsetof(xcb_gravity_notify_event_t, window)};
inline constexpr EventKind<xcb_circulate_notify_event_t> circulateNotify = {
    EventSource::core, XCB_CIRCULATE_NOTIFY, offsetof(xcb_circulate_notify_event_t, window)};
inline constexpr EventKind<xcb_property_notify_event_t> propertyNotify = {
    EventSource::core, XCB_PROPERTY_NOTIFY, offsetof(xcb_property_notify_event_t, window)};
inline constexpr EventKind<xcb_client_message_event_t> clientMessage = {
    EventSource::core, XCB_CLIENT_MESSAGE, offsetof(xcb_client_message_event_t, window)};
inline constexpr EventKind<xcb_mapping_notify_event_t> mappingNotify = {EventSource::core,
                                                                        XCB_MAPPING_NOTIFY};

inline constexpr EventKind<xcb_damage_notify_event_t> damageNotify = {
    EventSource::damage, XCB_DAMAGE_NOTIFY, offsetof(xcb_damage_notify_event_t, drawable)};
inline constexpr EventKind<xcb_randr_screen_change_notify_event_t> randrScreenChangeNotify = {
    EventSource::randr, XCB_RANDR_SCREEN_CHANGE_NOTIFY,
    offsetof(xcb_randr_screen_change_notify_event_t, request_window)};
inline constexpr EventKind<xcb_randr_notify_event_t> randrNotify = {EventSource::randr,
                                                                    XCB_RANDR_NOTIFY};
inline constexpr EventKind<xcb_shape_notify_event_t> shapeNotify = {
    EventSource::shape, XCB_SHAPE_NOTIFY, offsetof(xcb_shape_notify_event_t, affected_window)};
inline constexpr EventKind<xcb_xfixes_selection_notify_event_t> selectionNotify = {
    EventSource::xfixes, XCB_XFIXES_SELECTION_NOTIFY,
    offsetof(xcb_xfixes_selection_notify_event_t, window)};

inline constexpr EventKind<xcb_input_device_changed_event_t> deviceChanged = {
    EventSource::xinput, XCB_INPUT_DEVICE_CHANGED};
inline constexpr EventKind<xcb_input_enter_event_t> enter = {
    EventSource::xinput, XCB_INPUT_ENTER, offsetof(xcb_input_enter_event_t, event)};
inline constexpr EventKind<xcb_input_leave_event_t> leave = {
    EventSource::xinput, XCB_INPUT_LEAVE, offsetof(xcb_input_leave_event_t, event)};
inline constexpr EventKind<xcb_input_focus_in_event_t> focusIn = {
    EventSource::xinput, XCB_INPUT_FOCUS_IN, offsetof(xcb_input_focus_in_event_t, event)};
inline constexpr EventKind<xcb_input_focus_out_event_t> focusOut = {
    EventSource::xinput, XCB_INPUT_FOCUS_OUT, offsetof(xcb_input_focus_out_event_t, event)};
inline constexpr EventKind<xcb_input_hierarchy_event_t> hierarchy = {EventSource::xinput,
                                                                     XCB_INPUT_HIERARCHY};
inline constexpr EventKind<xcb_input_raw_key_press_event_t> rawKeyPress = {EventSource::xinput,
                                                                           XCB_INPUT_RAW_KEY_PRESS};
inline constexpr EventKind<xcb_input_raw_button_press_event_t> rawButtonPress = {
    EventSource::xinput, XCB_INPUT_RAW_BUTTON_PRESS};
inline constexpr EventKind<xcb_input_raw_button_release_event_t> rawButtonRelease = {
    EventSource::xinput, XCB_INPUT_RAW_BUTTON_RELEASE};

inline constexpr EventKind<xcb_xkb_new_keyboard_notify_event_t> newKeyboardNotify = {
    EventSource::xkb, XCB_XKB_NEW_KEYBOARD_NOTIFY};
inline constexpr EventKind<xcb_xkb_map_notify_event_t> keyboardMapNotify = {EventSource::xkb,
                                                                            XCB_XKB_MAP_NOTIFY};
inline constexpr EventKind<xcb_xkb_state_notify_event_t> keyboardStateNotify = {
    EventSource::xkb, XCB_XKB_STATE_NOTIFY};

} // namespace lumo::x11::event
