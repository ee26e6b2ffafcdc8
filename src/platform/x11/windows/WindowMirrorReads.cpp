#include "platform/x11/server/ClientProcess.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/windows/WindowMirror.h"

#include <xcb/shape.h>

#include <algorithm>
#include <memory>
#include <unordered_set>
#include <utility>

// The part of the mirror that asks the server. No request here waits for its reply, and a reply is
// dropped when its window has gone meanwhile.

namespace lumo::x11 {

namespace {

// What is read of a window, as bits: its properties by their indices, and these.
constexpr std::uint32_t processBit = 1U << WindowProperties::count;
constexpr std::uint32_t attributesBit = processBit << 1U;
constexpr std::uint32_t geometryBit = processBit << 2U;
constexpr std::uint32_t shapeBit = processBit << 3U;
constexpr std::uint32_t factBits = attributesBit - 1;
constexpr std::uint32_t structureBits = attributesBit | geometryBit | shapeBit;

// How deep in a frame a managed window is looked for.
constexpr int deepestClient = 3;

} // namespace

void WindowMirror::want(xcb_window_t window, std::uint32_t things) {
    const auto node = nodes_.find(window);
    if (node == nodes_.end()) {
        return;
    }
    if (!node->second.reads.hasWanted()) {
        unread_.push_back(window);
    }
    node->second.reads.want(things);
}

void WindowMirror::wantFacts(xcb_window_t window) {
    want(window, factBits);
}

void WindowMirror::wantStructure(xcb_window_t window) {
    want(window, structureBits);
}

void WindowMirror::wantInset(xcb_window_t window) {
    const auto node = nodes_.find(window);
    if (node != nodes_.end() && node->second.top != window && node->second.top != XCB_NONE) {
        want(window, insetBit);
    }
}

bool WindowMirror::isDescribed(const TopLevel &top, const Node &frame, const Node &client) {
    const auto ofClient = client.top == top.window.client ? factBits : factBits | insetBit;
    return (frame.known & (factBits | structureBits)) == (factBits | structureBits) &&
           (client.known & ofClient) == ofClient;
}

void WindowMirror::requestReads() {
    if (std::exchange(treeIsUnread_, false)) {
        readTree();
    }
    for (const auto window : std::exchange(unread_, {})) {
        const auto node = nodes_.find(window);
        if (node == nodes_.end()) {
            continue;
        }
        request(window, node->second);
        if (node->second.reads.hasWanted()) {
            unread_.push_back(window); // what is being read already is asked for again afterwards
        }
    }
}

template <class Reply, class Cookie>
void WindowMirror::read(xcb_window_t window, std::uint32_t thing, Cookie cookie,
                        std::function<void(Node &, const Reply *)> apply) {
    const auto serial = nodes_.at(window).serial;
    replies_.add<Reply>(
        cookie, [this, window, thing, serial, apply = std::move(apply)](const Reply *reply) {
            const auto found = nodes_.find(window);
            if (found == nodes_.end() || found->second.serial != serial) {
                return;
            }
            found->second.reads.finished(thing);
            found->second.known |= thing;
            apply(found->second, reply);
            if ((found->second.known & factBits) == factBits) {
                describe(found->second.top);
            }
        });
}

void WindowMirror::request(xcb_window_t window, Node &node) {
    const auto now = node.reads.begin();
    for (unsigned index = 0; index < WindowProperties::count; ++index) {
        if ((now & 1U << index) != 0) {
            read<xcb_get_property_reply_t>(window, 1U << index, properties_.request(window, index),
                                           [this, index](Node &read, const auto *reply) {
                                               properties_.apply(read.facts, index, reply);
                                           });
        }
    }
    if ((now & processBit) != 0) {
        if (connection_.extensions().resource) {
            read<xcb_res_query_client_ids_reply_t>(
                window, processBit, requestProcess(connection_, window),
                [](Node &read, const auto *reply) {
                    read.facts.connectedProcess = processOf(reply);
                });
        } else {
            node.reads.finished(processBit);
            node.known |= processBit;
        }
    }
    if ((now & attributesBit) != 0) {
        read<xcb_get_window_attributes_reply_t>(
            window, attributesBit, xcb_get_window_attributes(connection_, window),
            [this, window](Node &, const auto *reply) { applyAttributes(window, reply); });
    }
    if ((now & shapeBit) != 0) {
        if (connection_.extensions().shape) {
            read<xcb_shape_query_extents_reply_t>(
                window, shapeBit, xcb_shape_query_extents(connection_, window),
                [this, window](Node &, const auto *reply) {
                    applyShape(window, reply != nullptr && reply->bounding_shaped != 0);
                });
        } else {
            node.reads.finished(shapeBit);
            node.known |= shapeBit;
        }
    }
    if ((now & insetBit) != 0) {
        requestInset(window, node.top);
    }
    if ((now & geometryBit) != 0) {
        read<xcb_get_geometry_reply_t>(
            window, geometryBit, xcb_get_geometry(connection_, window),
            [this, window](Node &, const auto *reply) { applyGeometry(window, reply); });
    }
}

void WindowMirror::applyAttributes(xcb_window_t window,
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

void WindowMirror::applyGeometry(xcb_window_t window, const xcb_get_geometry_reply_t *reply) {
    auto *top = findTop(window);
    if (reply == nullptr || top == nullptr || reply->root != connection_.root()) {
        return;
    }
    top->window.depth = reply->depth;
    top->window.borderWidth = reply->border_width;
    const int border = 2 * reply->border_width;
    setGeometry(*top, {reply->x, reply->y, reply->width + border, reply->height + border});
}

void WindowMirror::requestInset(xcb_window_t window, xcb_window_t top) {
    const auto place = nodes_.at(window).placement;
    const auto origin = std::make_shared<drawing::PixelRect>();
    replies_.add<xcb_translate_coordinates_reply_t>(
        xcb_translate_coordinates(connection_, window, top, 0, 0), [origin](const auto *reply) {
            if (reply != nullptr) {
                *origin = {reply->dst_x, reply->dst_y, 0, 0};
            }
        });
    read<xcb_get_geometry_reply_t>(
        window, insetBit, xcb_get_geometry(connection_, window),
        [origin, place](Node &read, const auto *reply) {
            if (reply != nullptr && read.placement == place) {
                read.inFrame = {origin->x, origin->y, reply->width, reply->height};
            }
        });
}

// Every change of a shape counts as another shape.
void WindowMirror::applyShape(xcb_window_t window, bool isShaped) {
    if (auto *top = findTop(window); top != nullptr && (isShaped || top->window.shapeSerial != 0)) {
        top->window.shapeSerial = isShaped ? ++lastSerial_ : 0;
        note(&MirrorChange::appearance);
    }
}

// Reads the whole tree: the children of the root, all about each, and the managed windows in them.
void WindowMirror::readTree() {
    for (const auto &[window, node] : nodes_) {
        want(window, findTop(window) == nullptr ? factBits : factBits | structureBits);
    }
    replies_.add<xcb_query_tree_reply_t>(xcb_query_tree(connection_, connection_.root()),
                                         [this](const auto *reply) { applyTree(reply); });
}

void WindowMirror::applyTree(const xcb_query_tree_reply_t *reply) {
    if (reply == nullptr) {
        return;
    }
    const auto *first = xcb_query_tree_children(reply);
    std::vector<xcb_window_t> children(first, first + xcb_query_tree_children_length(reply));
    std::erase_if(children, [this](auto window) { return connection_.isServers(window); });
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
    findClients();
}

// Finds the managed windows in frames that were there before the mirror; what is put into a frame
// later tells of itself.
void WindowMirror::findClients() {
    for (const auto client : root_.clients()) {
        if (!nodes_.contains(client)) {
            watch(client);
            findTopOf(client, client);
        }
    }
    if (root_.clients().empty()) {
        for (const auto window : stacking_) {
            findClientIn(window, 0);
        }
    }
}

// Looks for the window with a manager's mark, where the manager lists none.
void WindowMirror::findClientIn(xcb_window_t window, int depth) {
    if (depth > 0 && nodes_.contains(window)) {
        return;
    }
    replies_.add<xcb_get_property_reply_t>(
        properties_.request(window, WindowProperties::managerStateIndex()),
        [this, window, depth](const xcb_get_property_reply_t *state) {
            if (value32(state).value_or(0) != 0) {
                if (depth > 0 && !nodes_.contains(window)) {
                    // It may have moved or gone before its events were selected, so look again.
                    watch(window);
                    findTopOf(window, window);
                }
                return;
            }
            if (state == nullptr || depth == deepestClient) {
                return;
            }
            replies_.add<xcb_query_tree_reply_t>(
                xcb_query_tree(connection_, window),
                [this, depth](const xcb_query_tree_reply_t *tree) {
                    if (tree == nullptr) {
                        return;
                    }
                    const auto *children = xcb_query_tree_children(tree);
                    for (int i = 0; i < xcb_query_tree_children_length(tree); ++i) {
                        findClientIn(children[i], depth + 1);
                    }
                });
        });
}

// Follows the parents from the ancestor to a child of the root, and puts the window into that.
void WindowMirror::findTopOf(xcb_window_t window, xcb_window_t ancestor) {
    const auto placement = nodes_.at(window).placement;
    replies_.add<xcb_query_tree_reply_t>(
        xcb_query_tree(connection_, ancestor),
        [this, window, ancestor, placement](const xcb_query_tree_reply_t *reply) {
            const auto node = nodes_.find(window);
            if (node == nodes_.end() || node->second.placement != placement) {
                return;
            }
            if (reply == nullptr) {
                if (ancestor == window) {
                    forget(window);
                }
                return;
            }
            if (findTop(ancestor) != nullptr) {
                putInside(window, ancestor);
            } else if (reply->parent != connection_.root() && reply->parent != XCB_NONE) {
                findTopOf(window, reply->parent);
            }
        });
}

} // namespace lumo::x11
