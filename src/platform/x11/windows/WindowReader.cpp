#include "platform/x11/windows/WindowReader.h"

#include "platform/x11/server/ClientProcess.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/PropertyReply.h"
#include "platform/x11/windows/RootState.h"

#include <xcb/shape.h>

#include <memory>
#include <utility>
#include <vector>

namespace lumo::x11 {

namespace {

// How deep in a frame a managed window is looked for.
constexpr int deepestClient = 3;

} // namespace

WindowReader::WindowReader(Connection &connection, WindowTree &tree, const RootState &root)
    : connection_(connection)
    , tree_(tree)
    , root_(root)
    , properties_(connection)
    , replies_(connection) {
}

std::uint32_t WindowReader::partOf(xcb_atom_t property) const {
    const auto index = properties_.indexOf(property);
    return index ? 1U << *index : 0;
}

void WindowReader::readAll() {
    tree_.wantEverything();
    replies_.add<xcb_query_tree_reply_t>(
        xcb_query_tree(connection_, connection_.root()), [this](const auto *reply) {
            if (reply != nullptr) {
                const auto *first = xcb_query_tree_children(reply);
                tree_.setChildren({first, first + xcb_query_tree_children_length(reply)});
                findClients();
            }
        });
}

void WindowReader::selectFocusEvents(bool selects) {
    selectsFocusEvents_ = selects;
    for (const auto window : tree_.stacking()) {
        if (!tree_.find(window)->isOwn) {
            selectEvents(window);
        }
    }
}

void WindowReader::selectEvents(xcb_window_t window) {
    std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (selectsFocusEvents_) {
        mask |= XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_ENTER_WINDOW;
    }
    xcb_change_window_attributes(connection_, window, XCB_CW_EVENT_MASK, &mask);
}

void WindowReader::requestWanted() {
    const auto wanted = tree_.takeWanted();
    for (const auto window : wanted.propertyAndStructureEvents) {
        selectEvents(window);
    }
    if (connection_.extensions().shape) {
        for (const auto window : wanted.shapeEvents) {
            xcb_shape_select_input(connection_, window, 1);
        }
    }
    for (const auto &search : wanted.searches) {
        replies_.add<xcb_query_tree_reply_t>(
            xcb_query_tree(connection_, search.ancestor),
            [this, search](const auto *reply) { tree_.applyParent(search, reply); });
    }
    for (const auto &read : wanted.reads) {
        requestProperties(read);
        requestProcess(read);
        requestStructure(read);
        requestShape(read);
        requestInset(read);
    }
}

template <class Reply, class Cookie>
void WindowReader::request(const Read &read, std::uint32_t part, Cookie cookie,
                           std::function<void(WindowFacts &, const Reply *)> store) {
    replies_.add<Reply>(cookie, [this, read, part, store = std::move(store)](const Reply *reply) {
        tree_.finish(read, part, [&](WindowFacts &facts) { store(facts, reply); });
    });
}

void WindowReader::requestProperties(const Read &read) {
    for (unsigned index = 0; index < WindowProperties::count; ++index) {
        if ((read.parts & 1U << index) != 0) {
            request<xcb_get_property_reply_t>(read, 1U << index,
                                              properties_.request(read.window, index),
                                              [this, index](WindowFacts &facts, const auto *reply) {
                                                  properties_.apply(facts, index, reply);
                                              });
        }
    }
}

void WindowReader::requestProcess(const Read &read) {
    if ((read.parts & windowPart::process) == 0) {
        return;
    }
    if (!connection_.extensions().resource) {
        tree_.finish(read, windowPart::process, [](WindowFacts &) {});
        return;
    }
    request<xcb_res_query_client_ids_reply_t>(
        read, windowPart::process, x11::requestProcess(connection_, read.window),
        [](WindowFacts &facts, const auto *reply) { facts.connectedProcess = processOf(reply); });
}

void WindowReader::requestStructure(const Read &read) {
    const auto window = read.window;
    if ((read.parts & windowPart::attributes) != 0) {
        request<xcb_get_window_attributes_reply_t>(
            read, windowPart::attributes, xcb_get_window_attributes(connection_, window),
            [this, window](WindowFacts &, const auto *reply) {
                tree_.applyAttributes(window, reply);
            });
    }
    if ((read.parts & windowPart::geometry) != 0) {
        request<xcb_get_geometry_reply_t>(read, windowPart::geometry,
                                          xcb_get_geometry(connection_, window),
                                          [this, window](WindowFacts &, const auto *reply) {
                                              tree_.applyGeometry(window, reply);
                                          });
    }
}

void WindowReader::requestShape(const Read &read) {
    if ((read.parts & windowPart::shape) == 0) {
        return;
    }
    if (!connection_.extensions().shape) {
        tree_.finish(read, windowPart::shape, [](WindowFacts &) {});
        return;
    }
    request<xcb_shape_query_extents_reply_t>(
        read, windowPart::shape, xcb_shape_query_extents(connection_, read.window),
        [this, window = read.window](WindowFacts &, const auto *reply) {
            tree_.applyShape(window, reply != nullptr && reply->bounding_shaped != 0);
        });
}

void WindowReader::requestInset(const Read &read) {
    if ((read.parts & windowPart::inset) == 0) {
        return;
    }
    const auto origin = std::make_shared<drawing::PixelRect>();
    replies_.add<xcb_translate_coordinates_reply_t>(
        xcb_translate_coordinates(connection_, read.window, read.top, 0, 0),
        [origin](const auto *reply) {
            if (reply != nullptr) {
                *origin = {reply->dst_x, reply->dst_y, 0, 0};
            }
        });
    request<xcb_get_geometry_reply_t>(
        read, windowPart::inset, xcb_get_geometry(connection_, read.window),
        [this, read, origin](WindowFacts &, const auto *reply) {
            if (reply != nullptr) {
                tree_.applyInset(read, {origin->x, origin->y, reply->width, reply->height});
            }
        });
}

// Finds the managed windows in frames that were there before the mirror; what is put into a frame
// later tells of itself.
void WindowReader::findClients() {
    for (const auto client : root_.clients()) {
        if (!tree_.contains(client)) {
            tree_.adopt(client);
        }
    }
    // The list may be missing, or lack a window: pekwm's lacks the newest one.
    for (const auto window : tree_.stacking()) {
        findClientIn(window, 0);
    }
}

// Looks for the window with a window manager's mark.
void WindowReader::findClientIn(xcb_window_t window, int depth) {
    if (depth > 0 && tree_.contains(window)) {
        return;
    }
    replies_.add<xcb_get_property_reply_t>(
        properties_.request(window, WindowProperties::managerStateIndex()),
        [this, window, depth](const xcb_get_property_reply_t *state) {
            if (value32(state).value_or(0) != 0) {
                if (depth > 0 && !tree_.contains(window)) {
                    // It may have moved or gone before its events were selected, so its place is
                    // searched anew.
                    tree_.adopt(window);
                }
            } else if (state != nullptr && depth < deepestClient) {
                replies_.add<xcb_query_tree_reply_t>(
                    xcb_query_tree(connection_, window),
                    [this, depth](const xcb_query_tree_reply_t *tree) {
                        if (tree != nullptr) {
                            findClientInChildren(*tree, depth + 1);
                        }
                    });
            }
        });
}

void WindowReader::findClientInChildren(const xcb_query_tree_reply_t &tree, int depth) {
    const auto *children = xcb_query_tree_children(&tree);
    for (int i = 0; i < xcb_query_tree_children_length(&tree); ++i) {
        findClientIn(children[i], depth);
    }
}

} // namespace lumo::x11
