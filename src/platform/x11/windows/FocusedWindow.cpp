#include "platform/x11/windows/FocusedWindow.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/windows/WindowTree.h"

#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t all = 1; // the parts of what is read

} // namespace

FocusedWindow::FocusedWindow(Connection &connection, const WindowTree &tree,
                             std::function<void()> changed)
    : connection_(connection)
    , tree_(tree)
    , changed_(std::move(changed))
    , replies_(connection) {
}

void FocusedWindow::follow(bool follows) {
    if (std::exchange(follows_, follows) == follows) {
        return;
    }
    events_ = {};
    set(std::nullopt);
    if (follows) {
        auto &events = connection_.events();
        const auto wantIt = [this](const auto &) { want(); };
        events_ = {events.on(event::coreFocusIn, wantIt), events.on(event::coreFocusOut, wantIt),
                   events.on(event::coreEnter, wantIt)};
        want();
    }
}

void FocusedWindow::want() {
    if (follows_) {
        reads_.want(all);
    }
}

void FocusedWindow::requestReads() {
    if (reads_.begin() == 0) {
        return;
    }
    // Only one client can redirect what happens to the root's children, and that is the manager.
    replies_.add<xcb_get_window_attributes_reply_t>(
        xcb_get_window_attributes(connection_, connection_.root()), [this](const auto *reply) {
            isManaged_ = reply != nullptr &&
                         (reply->all_event_masks & XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT) != 0;
        });
    replies_.add<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_), [this](const auto *reply) {
            reads_.finished(all);
            if (!follows_ || !isManaged_ || reply == nullptr) {
                set(std::nullopt);
            } else {
                applyFocus(reply->focus);
            }
        });
}

void FocusedWindow::applyFocus(xcb_window_t focus) {
    if (focus != XCB_INPUT_FOCUS_POINTER_ROOT && focus != connection_.root()) {
        search(focus);
        return;
    }
    replies_.add<xcb_query_pointer_reply_t>(
        xcb_query_pointer(connection_, connection_.root()),
        [this](const auto *reply) { search(reply == nullptr ? XCB_NONE : reply->child); });
}

// The focus may be deep inside a managed window.
void FocusedWindow::search(xcb_window_t window) {
    if (!follows_ || window == XCB_NONE || window == connection_.root()) {
        return;
    }
    if (const auto *found = tree_.find(window)) {
        if (!found->isOverrideRedirect || found->isManaged) {
            set(found->client);
        }
        return;
    }
    replies_.add<xcb_query_tree_reply_t>(
        xcb_query_tree(connection_, window), [this](const auto *reply) {
            search(reply == nullptr ? static_cast<xcb_window_t>(XCB_NONE) : reply->parent);
        });
}

void FocusedWindow::set(std::optional<xcb_window_t> window) {
    if (std::exchange(window_, window) != window) {
        changed_();
    }
}

} // namespace lumo::x11
