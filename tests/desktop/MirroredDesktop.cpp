#include "MirroredDesktop.h"

#include <stdexcept>

namespace lumo::x11 {

namespace {

constexpr double longestWait = 10;

// The mirror's record, with what the server answers in its place.
std::optional<MirrorWindow> truthOf(Connection &connection, const MirrorWindow &known) {
    auto truth = known;
    const auto attributes = connection.wait(xcb_get_window_attributes(connection, known.frame),
                                            xcb_get_window_attributes_reply);
    const auto geometry =
        connection.wait(xcb_get_geometry(connection, known.frame), xcb_get_geometry_reply);
    if (!attributes || !geometry) {
        return std::nullopt;
    }
    const int border = 2 * geometry->border_width;
    truth.geometry = {geometry->x, geometry->y, geometry->width + border,
                      geometry->height + border};
    truth.borderWidth = geometry->border_width;
    truth.depth = geometry->depth;
    truth.visual = attributes->visual;
    truth.isMapped = attributes->map_state != XCB_MAP_STATE_UNMAPPED;
    truth.isInputOnly = attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY;
    truth.isOverrideRedirect = attributes->override_redirect != 0;
    return truth;
}

} // namespace

MirroredDesktop::MirroredDesktop(const desktop::DesktopOptions &options)
    : desktop(options) {
}

void MirroredDesktop::catchUp() {
    session.stacking(); // a round trip: what the tester asked for has happened
    bool hasReplied = false;
    connection->whenReplied<xcb_get_input_focus_reply_t>(xcb_get_input_focus(*connection),
                                                         [&](const auto *) { hasReplied = true; });
    if (!connection->dispatchUntil([&] { return hasReplied && mirror->isSettled(); },
                                   longestWait)) {
        throw std::runtime_error("the mirror did not catch up with the server");
    }
}

bool MirroredDesktop::eventually(const std::function<bool()> &condition) {
    return connection->dispatchUntil(condition, longestWait);
}

const MirrorWindow &MirroredDesktop::window(xcb_window_t window) const {
    const auto *found = mirror->find(window);
    if (found == nullptr) {
        throw std::runtime_error("the mirror does not know the window");
    }
    return *found;
}

std::string differenceFromServer(Connection &connection, const WindowMirror &mirror) {
    const auto tree =
        connection.wait(xcb_query_tree(connection, connection.root()), xcb_query_tree_reply);
    const auto *first = xcb_query_tree_children(tree.get());
    const std::vector<xcb_window_t> children(first,
                                             first + xcb_query_tree_children_length(tree.get()));
    if (children != mirror.stacking()) {
        return "the order differs";
    }
    for (const auto window : children) {
        const auto *known = mirror.find(window);
        if (known == nullptr || known->frame != window || !known->isDescribed) {
            return "a child of the root window is not described";
        }
        const auto truth = truthOf(connection, *known);
        if (!truth || *truth != *known) {
            return "window " + std::to_string(window) + " differs";
        }
    }
    return {};
}

} // namespace lumo::x11
