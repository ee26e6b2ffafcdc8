#include "platform/x11/windows/WindowMirror.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"

#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t onAllDesktops = 0xffffffff;

// How long start-up waits for a server that does not come to rest.
constexpr double longestStart = 2;

} // namespace

drawing::PixelRect MirrorWindow::visibleArea() const {
    const auto &edges = invisibleEdges;
    const drawing::PixelRect area = {geometry.x + edges.left, geometry.y + edges.top,
                                     geometry.width - edges.left - edges.right,
                                     geometry.height - edges.top - edges.bottom};
    return area.width > 0 && area.height > 0 ? area : geometry;
}

WindowMirror::WindowMirror(Connection &connection)
    : connection_(connection)
    , properties_(connection)
    , replies_(connection)
    , root_(connection, [this](bool MirrorChange::*what) { note(what); }) {
    connection.selectRootEvents(XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
    events_ = subscribe();
    batches_ = connection.onDispatched([this] { finishBatch(); });
    start();
}

WindowMirror::~WindowMirror() = default;

void WindowMirror::start() {
    finishBatch();
    connection_.dispatchUntil([this] { return isSettled(); }, longestStart);
    hasStarted_ = true;
}

const MirrorWindow *WindowMirror::find(xcb_window_t window) const {
    const auto node = nodes_.find(window);
    if (node == nodes_.end()) {
        return nullptr;
    }
    const auto top = topLevels_.find(node->second.top);
    return top == topLevels_.end() ? nullptr : &top->second.window;
}

bool WindowMirror::isOnCurrentDesktop(const MirrorWindow &window) const {
    const auto current = root_.currentDesktop();
    return !current || !window.desktop || window.desktop == current ||
           window.desktop == onAllDesktops;
}

Handle WindowMirror::onChange(std::function<void(const MirrorChange &)> observer) {
    return changes_.subscribe(std::move(observer));
}

bool WindowMirror::isSettled() const {
    return !treeIsUnread_ && unread_.empty() && replies_.isEmpty() && root_.isSettled();
}

void WindowMirror::note(bool MirrorChange::*what) {
    change_.*what = true;
    ++revision_;
    if (what != &MirrorChange::appearance) {
        ++identityRevision_;
    }
}

void WindowMirror::finishBatch() {
    // Which of several clients in one frame counts depends on which is active.
    const auto active = root_.activeWindow().value_or(XCB_NONE);
    if (const auto before = std::exchange(describedActive_, active); before != active) {
        for (const auto window : {before, active}) {
            if (const auto *known = find(window)) {
                describe(known->frame);
            }
        }
    }
    if (change_.windowManager) {
        treeIsUnread_ |= hasStarted_;
        for (const auto window : stacking_) {
            describe(window);
        }
    }
    root_.requestReads();
    requestReads();
    if (change_ != MirrorChange()) {
        changes_.emit(std::exchange(change_, {}));
    }
}

std::vector<Handle> WindowMirror::subscribe() {
    auto &events = connection_.events();
    std::vector<Handle> handles;
    handles.push_back(events.on(event::createNotify, [this](const auto &e) { handleCreate(e); }));
    handles.push_back(events.on(event::destroyNotify, [this](const auto &e) {
        forget(e.window);
        claimed_.erase(e.window);
    }));
    handles.push_back(events.on(event::mapNotify, [this](const auto &e) { handleMap(e); }));
    handles.push_back(events.on(event::unmapNotify, [this](const auto &e) {
        if (e.event == connection_.root()) {
            setMapped(e.window, false);
        }
    }));
    handles.push_back(
        events.on(event::reparentNotify, [this](const auto &e) { handleReparent(e); }));
    handles.push_back(
        events.on(event::configureNotify, [this](const auto &e) { handleConfigure(e); }));
    handles.push_back(events.on(event::gravityNotify, [this](const auto &e) { handleGravity(e); }));
    handles.push_back(events.on(event::circulateNotify, [this](const auto &e) {
        if (e.event == connection_.root() && findTop(e.window) != nullptr) {
            placeAbove(e.window, e.place == XCB_PLACE_ON_TOP ? stacking_.back()
                                                             : static_cast<xcb_window_t>(XCB_NONE));
        }
    }));
    handles.push_back(events.on(event::propertyNotify, [this](const auto &e) {
        if (const auto index = properties_.indexOf(e.atom)) {
            want(e.window, 1U << *index);
        }
    }));
    handles.push_back(events.on(event::shapeNotify, [this](const auto &e) {
        if (e.shape_kind == XCB_SHAPE_SK_BOUNDING) {
            applyShape(e.affected_window, e.shaped != 0);
        }
    }));
    return handles;
}

void WindowMirror::handleMap(const xcb_map_notify_event_t &event) {
    if (event.event != connection_.root()) {
        return;
    }
    if (auto *top = findTop(event.window)) {
        setOverrideRedirect(*top, event.override_redirect != 0);
    }
    setMapped(event.window, true);
}

void WindowMirror::handleGravity(const xcb_gravity_notify_event_t &event) {
    auto *top = event.event == connection_.root() ? findTop(event.window) : nullptr;
    if (top != nullptr) {
        auto geometry = top->window.geometry;
        geometry.x = event.x;
        geometry.y = event.y;
        setGeometry(*top, geometry);
    }
}

void WindowMirror::handleCreate(const xcb_create_notify_event_t &event) {
    if (event.parent != connection_.root() || connection_.isServers(event.window)) {
        return;
    }
    forget(event.window);
    auto &top = addTopLevel(event.window);
    const int border = 2 * event.border_width;
    top.window.geometry = {event.x, event.y, event.width + border, event.height + border};
    top.window.borderWidth = event.border_width;
    stacking_.push_back(event.window);
    note(&MirrorChange::stacking);
    setOverrideRedirect(top, event.override_redirect != 0);
}

void WindowMirror::handleConfigure(const xcb_configure_notify_event_t &event) {
    auto *top = event.event == connection_.root() ? findTop(event.window) : nullptr;
    if (top == nullptr) {
        wantInset(event.window);
        return;
    }
    setOverrideRedirect(*top, event.override_redirect != 0);
    const int border = 2 * event.border_width;
    top->window.borderWidth = event.border_width;
    setGeometry(*top, {event.x, event.y, event.width + border, event.height + border});
    placeAbove(event.window, event.above_sibling);
}

void WindowMirror::handleReparent(const xcb_reparent_notify_event_t &event) {
    const auto known = nodes_.find(event.window);
    if (event.parent != connection_.root()) {
        // The window itself tells as well as its parents do; once is enough.
        if (known == nodes_.end()) {
            return;
        }
        std::vector<xcb_window_t> moved = {event.window};
        if (const auto *top = findTop(event.window)) {
            moved.insert(moved.end(), top->inside.begin(), top->inside.end());
            removeTopLevel(event.window);
        }
        for (const auto window : moved) {
            placeUnder(window, event.parent);
        }
        return;
    }
    auto *top = findTop(event.window);
    if (top == nullptr) {
        leaveTop(event.window);
        top = &addTopLevel(event.window);
        stacking_.push_back(event.window);
        note(&MirrorChange::stacking);
    } else {
        placeAbove(event.window, stacking_.back());
    }
    auto geometry = top->window.geometry;
    geometry.x = event.x;
    geometry.y = event.y;
    setGeometry(*top, geometry);
    setOverrideRedirect(*top, event.override_redirect != 0);
}

WindowMirror::TopLevel *WindowMirror::findTop(xcb_window_t window) {
    const auto found = topLevels_.find(window);
    return found == topLevels_.end() ? nullptr : &found->second;
}

void WindowMirror::setGeometry(TopLevel &top, const drawing::PixelRect &geometry) {
    const auto before = std::exchange(top.window.geometry, geometry);
    if (before == geometry) {
        return;
    }
    note(&MirrorChange::appearance);
    if (before.width != geometry.width || before.height != geometry.height) {
        wantInset(top.window.client);
    }
}

void WindowMirror::setOverrideRedirect(TopLevel &top, bool isOverrideRedirect) {
    if (std::exchange(top.window.isOverrideRedirect, isOverrideRedirect) != isOverrideRedirect) {
        describe(top.window.frame);
    }
}

void WindowMirror::setMapped(xcb_window_t window, bool isMapped) {
    auto *top = findTop(window);
    if (top == nullptr || top->window.isMapped == isMapped) {
        return;
    }
    top->window.isMapped = isMapped;
    note(&MirrorChange::appearance);
    if (isMapped && connection_.isOwn(window)) {
        wantFacts(window);
    }
}

void WindowMirror::placeAbove(xcb_window_t window, xcb_window_t sibling) {
    const auto place = std::find(stacking_.begin(), stacking_.end(), window);
    if (place == stacking_.end() || window == sibling) {
        return;
    }
    const auto below =
        place == stacking_.begin() ? static_cast<xcb_window_t>(XCB_NONE) : *(place - 1);
    if (below == sibling) {
        return;
    }
    stacking_.erase(place);
    auto target = stacking_.begin();
    if (sibling != XCB_NONE) {
        target = std::find(stacking_.begin(), stacking_.end(), sibling);
        target = target == stacking_.end() ? target : target + 1;
    }
    stacking_.insert(target, window);
    note(&MirrorChange::stacking);
}

WindowMirror::Node &WindowMirror::watch(xcb_window_t window) {
    const auto [found, isNew] = nodes_.try_emplace(window);
    if (isNew) {
        found->second.serial = ++lastSerial_;
        // Whoever makes a window on this connection selects its events; its properties are read
        // again when it is mapped.
        if (!connection_.isOwn(window)) {
            const std::uint32_t mask =
                XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
            xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &mask);
        }
        wantFacts(window);
    }
    return found->second;
}

WindowMirror::TopLevel &WindowMirror::addTopLevel(xcb_window_t window) {
    watch(window).top = window;
    if (connection_.extensions().shape) {
        xcb_shape_select_input(connection_, window, 1);
    }
    wantStructure(window);
    auto &top = topLevels_[window];
    top.window.frame = window;
    top.window.client = window;
    top.window.isOwn = connection_.isOwn(window);
    return top;
}

void WindowMirror::removeTopLevel(xcb_window_t window) {
    const auto found = topLevels_.find(window);
    if (found == topLevels_.end()) {
        return;
    }
    for (const auto inside : found->second.inside) {
        if (const auto node = nodes_.find(inside); node != nodes_.end()) {
            node->second.top = XCB_NONE;
        }
    }
    topLevels_.erase(found);
    std::erase(stacking_, window);
    if (const auto node = nodes_.find(window); node != nodes_.end()) {
        node->second.top = XCB_NONE;
    }
    note(&MirrorChange::stacking);
}

void WindowMirror::forget(xcb_window_t window) {
    removeTopLevel(window);
    leaveTop(window);
    nodes_.erase(window);
}

void WindowMirror::leaveTop(xcb_window_t window) {
    const auto node = nodes_.find(window);
    if (node == nodes_.end()) {
        return;
    }
    const auto top = std::exchange(node->second.top, XCB_NONE);
    node->second.placement = ++lastSerial_;
    if (auto *outer = findTop(top); outer != nullptr && top != window) {
        std::erase(outer->inside, window);
        describe(top);
    }
}

void WindowMirror::placeUnder(xcb_window_t window, xcb_window_t parent) {
    const auto node = nodes_.find(window);
    if (node == nodes_.end()) {
        return;
    }
    leaveTop(window);
    if (findTop(parent) != nullptr) {
        putInside(window, parent);
    } else {
        findTopOf(window, parent);
    }
}

void WindowMirror::putInside(xcb_window_t window, xcb_window_t top) {
    auto &node = nodes_.at(window);
    node.top = top;
    node.known &= ~insetBit;
    topLevels_.at(top).inside.push_back(window);
    wantInset(window);
    describe(top);
}

// The managed window in a top-level window: ours, or the active one where a frame holds several,
// else the one that was it before, else the latest.
xcb_window_t WindowMirror::clientOf(const TopLevel &top) const {
    xcb_window_t latest = top.window.frame;
    bool isStill = false;
    for (const auto window : top.inside) {
        if (claimed_.contains(window)) {
            return window;
        }
        if (!nodes_.at(window).facts.isManaged()) {
            continue;
        }
        if (window == root_.activeWindow()) {
            return window;
        }
        isStill |= window == top.window.client;
        latest = window;
    }
    return isStill ? top.window.client : latest;
}

// What of a frame lies beyond what its manager and its client say they show.
Edges WindowMirror::invisibleEdgesOf(const TopLevel &top, const Node &client,
                                     const Edges &before) const {
    constexpr int widest = 64; // anything else is a resize of which only a half has happened
    auto edges = client.facts.shadows;
    const auto &shown = client.facts.decorations;
    if (client.top == top.window.client || !shown || (client.known & insetBit) == 0) {
        return edges;
    }
    const int borders = 2 * top.window.borderWidth;
    const auto &inner = client.inFrame;
    const Edges frame = {
        std::max(inner.x - shown->left, 0),
        std::max(top.window.geometry.width - borders - inner.maxX() - shown->right, 0),
        std::max(inner.y - shown->top, 0),
        std::max(top.window.geometry.height - borders - inner.maxY() - shown->bottom, 0)};
    if (std::max({frame.left, frame.right, frame.top, frame.bottom}) > widest) {
        return before;
    }
    edges.left += frame.left;
    edges.right += frame.right;
    edges.top += frame.top;
    edges.bottom += frame.bottom;
    return edges;
}

void WindowMirror::describe(xcb_window_t window) {
    auto *top = findTop(window);
    if (top == nullptr) {
        return;
    }
    MirrorWindow next = top->window;
    next.client = clientOf(*top);
    const auto &frame = nodes_.at(window);
    const auto &client = nodes_.at(next.client);
    const auto &facts = client.facts;
    next.isDescribed = isDescribed(*top, frame, client);
    next.isOwn = connection_.isOwn(next.frame) || claimed_.contains(next.client);
    // The mark stays on windows that a killed manager leaves behind.
    next.isManaged =
        facts.isManaged() && (next.client != next.frame || root_.isWindowManagerRunning());
    // One of the two alone may also stand for a window of which the title bar is left.
    const bool isIconic = facts.managerState == XCB_ICCCM_WM_STATE_ICONIC;
    next.isMinimized = facts.isHidden || isIconic;
    next.isPutAway = facts.isHidden && isIconic;
    next.isDock = facts.type == WindowFacts::Type::dock;
    next.invisibleEdges = invisibleEdgesOf(*top, client, next.invisibleEdges);
    next.skipsTaskbar = facts.skipsTaskbar;
    next.transientFor = facts.transientFor;
    // What is made on this connection are overlays, ordered among ordinary windows.
    next.stackingLayer =
        stackingLayerOf(facts, next.isOverrideRedirect && !next.isManaged && !next.isOwn);
    const auto opacity = frame.facts.opacity ? frame.facts.opacity : facts.opacity;
    next.opacity = opacity.value_or(0xffffffff) / static_cast<double>(0xffffffff);
    next.processIdentifier = facts.processIdentifier();
    next.instanceName = facts.instanceName;
    next.className = facts.className;
    next.title = facts.title();
    next.desktop = facts.desktop;
    if (next == top->window) {
        return;
    }
    if (next.opacity != top->window.opacity || next.invisibleEdges != top->window.invisibleEdges ||
        next.isDescribed != top->window.isDescribed) {
        note(&MirrorChange::appearance);
    }
    note(&MirrorChange::properties);
    top->window = std::move(next);
}

} // namespace lumo::x11
