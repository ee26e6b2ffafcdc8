#include "platform/x11/windows/WindowTree.h"

#include <unistd.h>

#include <algorithm>
#include <utility>

namespace lumo::x11 {

namespace {

drawing::PixelRect withBorder(int x, int y, int width, int height, int border) {
    return {x, y, width + 2 * border, height + 2 * border};
}

} // namespace

const MirrorWindow *WindowTree::find(xcb_window_t window) const {
    const auto node = nodes_.find(window);
    if (node == nodes_.end()) {
        return nullptr;
    }
    const auto top = topLevels_.find(node->second.top);
    return top == topLevels_.end() ? nullptr : &top->second.window;
}

WindowTree::Wanted WindowTree::takeWanted() {
    auto wanted = std::exchange(wanted_, {});
    std::erase_if(wanted.searches, [this](const auto &search) {
        const auto node = nodes_.find(search.window);
        return node == nodes_.end() || node->second.placement != search.placement;
    });
    for (const auto window : std::exchange(unread_, {})) {
        const auto found = nodes_.find(window);
        if (found == nodes_.end()) {
            continue;
        }
        auto &node = found->second;
        if (const auto parts = node.reads.begin(); parts != 0) {
            wanted.reads.push_back({window, node.serial, parts, node.top, node.placement});
        }
        if (node.reads.hasWanted()) {
            unread_.push_back(window);
        }
    }
    return wanted;
}

bool WindowTree::isSettled() const {
    return unread_.empty() && wanted_.searches.empty() &&
           wanted_.propertyAndStructureEvents.empty() && wanted_.shapeEvents.empty();
}

void WindowTree::handle(const xcb_create_notify_event_t &event) {
    if (event.parent != numbers_.root || numbers_.isServers(event.window)) {
        return;
    }
    forget(event.window);
    auto &top = addTopLevel(event.window);
    top.window.geometry =
        withBorder(event.x, event.y, event.width, event.height, event.border_width);
    top.window.borderWidth = event.border_width;
    stacking_.push_back(event.window);
    note(&MirrorChange::stacking);
    setOverrideRedirect(top, event.override_redirect != 0);
}

void WindowTree::handle(const xcb_destroy_notify_event_t &event) {
    forget(event.window);
    claimed_.erase(event.window);
}

void WindowTree::handle(const xcb_map_notify_event_t &event) {
    if (event.event != numbers_.root) {
        return;
    }
    if (auto *top = findTop(event.window)) {
        setOverrideRedirect(*top, event.override_redirect != 0);
    }
    setMapped(event.window, true);
}

void WindowTree::handle(const xcb_unmap_notify_event_t &event) {
    if (event.event == numbers_.root) {
        setMapped(event.window, false);
    }
}

void WindowTree::handle(const xcb_configure_notify_event_t &event) {
    auto *top = event.event == numbers_.root ? findTop(event.window) : nullptr;
    if (top == nullptr) {
        wantInset(event.window);
        return;
    }
    setOverrideRedirect(*top, event.override_redirect != 0);
    top->window.borderWidth = event.border_width;
    setGeometry(*top, withBorder(event.x, event.y, event.width, event.height, event.border_width));
    placeAbove(event.window, event.above_sibling);
}

void WindowTree::handle(const xcb_reparent_notify_event_t &event) {
    if (event.parent != numbers_.root) {
        moveIntoParent(event.window, event.parent);
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

void WindowTree::handle(const xcb_gravity_notify_event_t &event) {
    auto *top = event.event == numbers_.root ? findTop(event.window) : nullptr;
    if (top != nullptr) {
        auto geometry = top->window.geometry;
        geometry.x = event.x;
        geometry.y = event.y;
        setGeometry(*top, geometry);
    }
}

void WindowTree::handle(const xcb_circulate_notify_event_t &event) {
    if (event.event == numbers_.root && findTop(event.window) != nullptr) {
        placeAbove(event.window, event.place == XCB_PLACE_ON_TOP
                                     ? stacking_.back()
                                     : static_cast<xcb_window_t>(XCB_NONE));
    }
}

void WindowTree::handle(const xcb_shape_notify_event_t &event) {
    if (event.shape_kind == XCB_SHAPE_SK_BOUNDING) {
        applyShape(event.affected_window, event.shaped != 0);
    }
}

void WindowTree::want(xcb_window_t window, std::uint32_t parts) {
    const auto node = nodes_.find(window);
    if (node == nodes_.end()) {
        return;
    }
    if (!node->second.reads.hasWanted()) {
        unread_.push_back(window);
    }
    node->second.reads.want(parts);
}

void WindowTree::wantEverything() {
    for (const auto &[window, node] : nodes_) {
        want(window, findTop(window) == nullptr ? windowPart::facts
                                                : windowPart::facts | windowPart::structure);
    }
}

void WindowTree::wantInset(xcb_window_t window) {
    const auto node = nodes_.find(window);
    if (node != nodes_.end() && node->second.top != window && node->second.top != XCB_NONE) {
        want(window, windowPart::inset);
    }
}

void WindowTree::setChildren(std::vector<xcb_window_t> children) {
    std::erase_if(children, [this](auto window) { return numbers_.isServers(window); });
    const std::unordered_set<xcb_window_t> present(children.begin(), children.end());
    for (const auto window : std::vector(stacking_)) {
        if (!present.contains(window)) {
            forget(window);
        }
    }
    for (const auto window : children) {
        if (findTop(window) == nullptr) {
            leaveTop(window);
            addTopLevel(window);
        }
    }
    if (std::exchange(stacking_, children) != children) {
        note(&MirrorChange::stacking);
    }
}

void WindowTree::applyParent(const TopSearch &search, const xcb_query_tree_reply_t *reply) {
    const auto node = nodes_.find(search.window);
    if (node == nodes_.end() || node->second.placement != search.placement) {
        return;
    }
    if (reply == nullptr) {
        if (search.ancestor == search.window) {
            forget(search.window);
        }
    } else if (findTop(search.ancestor) != nullptr) {
        putInside(search.window, search.ancestor);
    } else if (reply->parent != numbers_.root && reply->parent != XCB_NONE) {
        searchTop(search.window, reply->parent);
    }
}

void WindowTree::applyAttributes(xcb_window_t window,
                                 const xcb_get_window_attributes_reply_t *reply) {
    auto *top = findTop(window);
    if (reply == nullptr || top == nullptr) {
        return;
    }
    top->window.isInputOnly = reply->_class == XCB_WINDOW_CLASS_INPUT_ONLY;
    top->window.visual = reply->visual;
    setOverrideRedirect(*top, reply->override_redirect != 0);
    top->window.isMapped = reply->map_state != XCB_MAP_STATE_UNMAPPED;
    note(&MirrorChange::appearance);
}

void WindowTree::applyGeometry(xcb_window_t window, const xcb_get_geometry_reply_t *reply) {
    auto *top = findTop(window);
    if (reply == nullptr || top == nullptr || reply->root != numbers_.root) {
        return;
    }
    top->window.depth = reply->depth;
    top->window.borderWidth = reply->border_width;
    setGeometry(*top,
                withBorder(reply->x, reply->y, reply->width, reply->height, reply->border_width));
}

// Every change of a shape counts as another shape.
void WindowTree::applyShape(xcb_window_t window, bool isShaped) {
    if (auto *top = findTop(window); top != nullptr && (isShaped || top->window.shapeSerial != 0)) {
        top->window.shapeSerial = isShaped ? ++lastSerial_ : 0;
        note(&MirrorChange::appearance);
    }
}

void WindowTree::applyInset(const Read &read, const drawing::PixelRect &inFrame) {
    if (auto *node = nodeOf(read); node != nullptr && node->placement == read.placement) {
        node->inFrame = inFrame;
    }
}

void WindowTree::adopt(xcb_window_t window) {
    watch(window);
    searchTop(window, window);
}

void WindowTree::setActiveWindow(std::optional<xcb_window_t> window) {
    // Which of several clients in one frame counts depends on which is active.
    const auto before = std::exchange(activeWindow_, window);
    if (before == window) {
        return;
    }
    for (const auto &changed : {before, window}) {
        if (const auto *known = changed ? find(*changed) : nullptr) {
            redescribe(known->frame);
        }
    }
}

void WindowTree::setManagement(Management management) {
    if (std::exchange(management_, management) != management) {
        redescribeAll();
    }
}

void WindowTree::setInterfaceWindow(xcb_window_t window) {
    const auto client = window & numbers_.clientBits;
    if (std::exchange(numbers_.interfaceClient, client) != client) {
        redescribeAll();
    }
}

void WindowTree::redescribeAll() {
    for (const auto window : stacking_) {
        redescribe(window);
    }
}

// Other clients may state any process, and those elsewhere have one of another machine: windows of
// a client whose process can't be told share a number below 0 instead.
std::int32_t WindowTree::processOf(xcb_window_t window) const {
    const auto stated = nodes_.at(window).facts.processIdentifier();
    if (numbers_.isOfThisProgram(window)) {
        return getpid();
    }
    return stated > 0 && stated != getpid() ? stated : -numbers_.clientOf(window);
}

WindowTree::Node *WindowTree::nodeOf(const Read &read) {
    const auto found = nodes_.find(read.window);
    return found == nodes_.end() || found->second.serial != read.serial ? nullptr : &found->second;
}

WindowTree::TopLevel *WindowTree::findTop(xcb_window_t window) {
    const auto found = topLevels_.find(window);
    return found == topLevels_.end() ? nullptr : &found->second;
}

void WindowTree::setGeometry(TopLevel &top, const drawing::PixelRect &geometry) {
    const auto before = std::exchange(top.window.geometry, geometry);
    if (before == geometry) {
        return;
    }
    note(&MirrorChange::appearance);
    if (before.width != geometry.width || before.height != geometry.height) {
        wantInset(top.window.client);
    }
}

void WindowTree::setOverrideRedirect(TopLevel &top, bool isOverrideRedirect) {
    if (std::exchange(top.window.isOverrideRedirect, isOverrideRedirect) != isOverrideRedirect) {
        redescribe(top.window.frame);
    }
}

void WindowTree::setMapped(xcb_window_t window, bool isMapped) {
    auto *top = findTop(window);
    if (top == nullptr || top->window.isMapped == isMapped) {
        return;
    }
    top->window.isMapped = isMapped;
    note(&MirrorChange::appearance);
    if (isMapped && numbers_.isOwn(window)) {
        want(window, windowPart::facts);
    }
}

void WindowTree::placeAbove(xcb_window_t window, xcb_window_t sibling) {
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

WindowTree::Node &WindowTree::watch(xcb_window_t window) {
    const auto [found, isNew] = nodes_.try_emplace(window);
    if (isNew) {
        found->second.serial = ++lastSerial_;
        // The events of a window of ours are selected by the code that makes it; its properties are
        // read again when it is mapped.
        if (!numbers_.isOwn(window)) {
            wanted_.propertyAndStructureEvents.push_back(window);
        }
        want(window, windowPart::facts);
    }
    return found->second;
}

WindowTree::TopLevel &WindowTree::addTopLevel(xcb_window_t window) {
    watch(window).top = window;
    wanted_.shapeEvents.push_back(window);
    want(window, windowPart::structure);
    auto &top = topLevels_[window];
    top.window.frame = window;
    top.window.client = window;
    top.window.isOwn = numbers_.isOwn(window);
    return top;
}

void WindowTree::removeTopLevel(xcb_window_t window) {
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

void WindowTree::forget(xcb_window_t window) {
    removeTopLevel(window);
    leaveTop(window);
    nodes_.erase(window);
}

void WindowTree::leaveTop(xcb_window_t window) {
    const auto node = nodes_.find(window);
    if (node == nodes_.end()) {
        return;
    }
    const auto top = std::exchange(node->second.top, XCB_NONE);
    node->second.placement = ++lastSerial_;
    if (auto *outer = findTop(top); outer != nullptr && top != window) {
        std::erase(outer->inside, window);
        redescribe(top);
    }
}

void WindowTree::moveIntoParent(xcb_window_t window, xcb_window_t parent) {
    // The window itself tells as well as its parents do; once is enough.
    if (!nodes_.contains(window)) {
        return;
    }
    std::vector<xcb_window_t> moved = {window};
    if (const auto *top = findTop(window)) {
        moved.insert(moved.end(), top->inside.begin(), top->inside.end());
        removeTopLevel(window);
    }
    for (const auto each : moved) {
        if (!nodes_.contains(each)) {
            continue;
        }
        leaveTop(each);
        if (findTop(parent) != nullptr) {
            putInside(each, parent);
        } else {
            searchTop(each, parent);
        }
    }
}

void WindowTree::searchTop(xcb_window_t window, xcb_window_t ancestor) {
    wanted_.searches.push_back({window, nodes_.at(window).placement, ancestor});
}

void WindowTree::putInside(xcb_window_t window, xcb_window_t top) {
    auto &node = nodes_.at(window);
    node.top = top;
    node.known &= ~windowPart::inset;
    topLevels_.at(top).inside.push_back(window);
    wantInset(window);
    redescribe(top);
}

// The managed window in a top-level window: ours, or the active one where a frame holds several,
// else the one that was it before, else the latest.
xcb_window_t WindowTree::clientOf(const TopLevel &top) const {
    const auto ours =
        std::ranges::find_if(top.inside, [this](auto window) { return claimed_.contains(window); });
    if (ours != top.inside.end()) {
        return *ours;
    }
    xcb_window_t latest = top.window.frame;
    bool isStill = false;
    for (const auto window : top.inside) {
        if (!nodes_.at(window).facts.isManaged()) {
            continue;
        }
        if (window == activeWindow_) {
            return window;
        }
        isStill |= window == top.window.client;
        latest = window;
    }
    return isStill ? top.window.client : latest;
}

void WindowTree::redescribe(xcb_window_t window) {
    auto *top = findTop(window);
    if (top == nullptr) {
        return;
    }
    const auto chosen = clientOf(*top);
    const auto &frame = nodes_.at(window);
    const auto &client = nodes_.at(chosen);
    const bool isInside = chosen != window;
    const bool hasInset = (client.known & windowPart::inset) != 0;
    constexpr auto allOfFrame = windowPart::facts | windowPart::structure;
    const bool isComplete = (frame.known & allOfFrame) == allOfFrame &&
                            (client.known & windowPart::facts) == windowPart::facts &&
                            (!isInside || hasInset);
    auto next =
        describe(top->window, {.client = chosen,
                               .frameFacts = frame.facts,
                               .clientFacts = client.facts,
                               .clientInFrame = isInside && hasInset ? std::optional(client.inFrame)
                                                                     : std::nullopt,
                               .processIdentifier = processOf(chosen),
                               .isComplete = isComplete,
                               .isOwn = numbers_.isOwn(window) || claimed_.contains(chosen),
                               .management = management_});
    const auto &before = top->window;
    if (next == before) {
        return;
    }
    if (next.opacity != before.opacity || next.invisibleEdges != before.invisibleEdges ||
        next.isDescribed != before.isDescribed) {
        note(&MirrorChange::appearance);
    }
    note(&MirrorChange::properties);
    top->window = std::move(next);
}

} // namespace lumo::x11
