#include "platform/x11/windows/WindowMirror.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"

namespace lumo::x11 {

namespace {

constexpr std::uint32_t onAllDesktops = 0xffffffff;

} // namespace

WindowMirror::WindowMirror(Connection &connection)
    : tree_({.root = connection.root(),
             .clientBits = ~connection.setup().resource_id_mask,
             .ownClient = connection.setup().resource_id_base})
    , root_(connection, [this](bool MirrorChange::*what) { tree_.changes().note(what); })
    , focus_(connection, tree_, [this] { tree_.changes().note(&MirrorChange::activeWindow); })
    , reader_(connection, tree_, root_) {
    connection.selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
    events_ = subscribe(connection);
    batches_ = connection.onDispatched([this] { finishBatch(); });
    root_.requestReads(); // before the tree: its managed windows are found by the root's list
    reader_.readAll();
    reader_.requestWanted();
    connection.dispatchUntil([this] { return isSettled(); });
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): not while it starts
    isReadAnew_ = true;
}

std::array<Handle, 10> WindowMirror::subscribe(Connection &connection) {
    auto &events = connection.events();
    const auto handle = [this](const auto &event) { tree_.handle(event); };
    return {events.on(event::createNotify, handle),
            events.on(event::destroyNotify, handle),
            events.on(event::mapNotify, handle),
            events.on(event::unmapNotify, handle),
            events.on(event::reparentNotify, handle),
            events.on(event::configureNotify, handle),
            events.on(event::gravityNotify, handle),
            events.on(event::circulateNotify, handle),
            events.on(event::shapeNotify, handle),
            events.on(event::propertyNotify, [this](const auto &property) {
                if (const auto part = reader_.partOf(property.atom); part != 0) {
                    tree_.want(property.window, part);
                }
            })};
}

// Others unmap them. Several may show at a time, one on each display, and the current is but one.
bool WindowMirror::isOnShownDesktop(const MirrorWindow &window) const {
    const auto current = root_.currentDesktop();
    return root_.management() != Management::compositing || !current || !window.desktop ||
           window.desktop == current || window.desktop == onAllDesktops;
}

Handle WindowMirror::onChange(std::function<void(const MirrorChange &)> observer) {
    return changed_.subscribe(std::move(observer));
}

bool WindowMirror::isSettled() const {
    return tree_.isSettled() && reader_.isSettled() && root_.isSettled() && focus_.isSettled();
}

void WindowMirror::followFocus() {
    const bool follows = !root_.namesActiveWindow();
    if (root_.isSettled() && follows != focus_.isFollowing()) {
        reader_.selectFocusEvents(follows);
        focus_.follow(follows);
    }
    const auto &changes = tree_.changes().gathered();
    if (changes.stacking || changes.windowManager) {
        focus_.want(); // a window manager may have come or gone
    }
    focus_.requestReads();
}

void WindowMirror::finishBatch() {
    followFocus();
    tree_.setManagement(root_.management());
    tree_.setActiveWindow(activeWindow());
    root_.requestReads();
    if (isReadAnew_ && tree_.changes().gathered().windowManager) {
        reader_.readAll();
    }
    reader_.requestWanted();
    if (tree_.changes().gathered() != MirrorChange()) {
        changed_.emit(tree_.changes().take());
    }
}

} // namespace lumo::x11
