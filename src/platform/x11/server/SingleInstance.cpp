#include "platform/x11/server/SingleInstance.h"

#include "platform/x11/server/ClientMessage.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"

#include <string>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr const char *reopenRequestName = "_LUMO_REOPEN";

void requestReopening(Connection &connection, xcb_window_t owner) {
    sendClientMessage(connection, owner, XCB_EVENT_MASK_NO_EVENT, owner,
                      connection.atom(reopenRequestName), {});
}

} // namespace

std::unique_ptr<SingleInstance> SingleInstance::claim(Connection &connection) {
    const auto selection =
        connection.atom("_LUMO_INSTANCE_S" + std::to_string(connection.screenNumber()));
    OwnedWindow window(connection);
    const auto id = window.id();
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, id, connection.root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    std::unique_ptr<SingleInstance> instance(new SingleInstance(connection, std::move(window)));
    // Two that start at the same moment must not both find the selection free.
    xcb_grab_server(connection);
    const auto owner = connection.wait(xcb_get_selection_owner(connection, selection),
                                       xcb_get_selection_owner_reply);
    if (owner && owner->owner == XCB_NONE) {
        xcb_set_selection_owner(connection, id, selection, XCB_CURRENT_TIME);
    } else {
        instance.reset();
        if (owner) {
            requestReopening(connection, owner->owner);
        }
    }
    xcb_ungrab_server(connection);
    // Until the server has taken all of it: what a program has sent before it goes may be lost.
    connection.wait(xcb_get_input_focus(connection), xcb_get_input_focus_reply);
    return instance;
}

SingleInstance::SingleInstance(Connection &connection, OwnedWindow owner)
    : owner_(std::move(owner))
    , reopenRequest_(connection.atom(reopenRequestName))
    , events_(
          connection.events().on(event::clientMessage, owner_.id(), [this](const auto &message) {
              if (message.type == reopenRequest_) {
                  reopened_.emit();
              }
          })) {
}

Handle SingleInstance::onReopenRequest(std::function<void()> observer) {
    return reopened_.subscribe(std::move(observer));
}

} // namespace lumo::x11
