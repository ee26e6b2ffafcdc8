#include "platform/wayland/sway/UnmanagedWindows.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/PeerProcess.h"

#include <cstdlib>
#include <utility>

namespace lumo::wayland::sway {

namespace {

struct Free {
    void operator()(void *memory) const noexcept { std::free(memory); }
};

template <class T>
using Received = std::unique_ptr<T, Free>;

// Of requests, replies and events that give a place, a size and a border.
template <class T>
drawing::PixelRect areaOf(const T &window) {
    return {window.x, window.y, window.width + 2 * window.border_width,
            window.height + 2 * window.border_width};
}

} // namespace

UnmanagedWindows::UnmanagedWindows(std::int32_t compositor, freedesktop::GlibMainLoop &mainLoop,
                                   std::function<void()> changed)
    : connection_(xcb_connect(nullptr, nullptr)) {
    const int socket = xcb_get_file_descriptor(connection_);
    if (xcb_connection_has_error(connection_) == 0 &&
        freedesktop::peerProcess(socket) == compositor) {
        readAll();
        watch_ = mainLoop.watch(
            socket, {.prepare = [] { return false; }, .dispatch = [this] { return dispatch(); }});
    }
    changed_ = std::move(changed); // for what comes after, not for what was found here
}

UnmanagedWindows::~UnmanagedWindows() {
    watch_.reset();
    xcb_disconnect(connection_);
}

void UnmanagedWindows::readAll() {
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &events);
    const Received<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
    const auto count = tree ? xcb_query_tree_children_length(tree.get()) : 0;
    for (int i = 0; i < count; ++i) {
        const auto window = xcb_query_tree_children(tree.get())[i];
        const auto wantedArea = xcb_get_geometry(connection_, window);
        const auto wanted = xcb_get_window_attributes(connection_, window);
        const Received<xcb_get_geometry_reply_t> area(
            xcb_get_geometry_reply(connection_, wantedArea, nullptr));
        const Received<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(connection_, wanted, nullptr));
        if (area && attributes) {
            windows_[window] = {areaOf(*area), attributes->override_redirect != 0,
                                attributes->map_state != XCB_MAP_STATE_UNMAPPED};
        }
    }
    dispatch();
}

// False when the server has gone.
bool UnmanagedWindows::dispatch() {
    while (const Received<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        take(*event);
    }
    const bool isAlive = xcb_connection_has_error(connection_) == 0;
    if (!isAlive) {
        windows_.clear();
    }
    refresh();
    return isAlive;
}

void UnmanagedWindows::take(const xcb_generic_event_t &event) {
    constexpr std::uint8_t isSent = 0x80;
    switch (event.response_type & ~isSent) {
    case XCB_CREATE_NOTIFY: {
        const auto &created = reinterpret_cast<const xcb_create_notify_event_t &>(event);
        windows_[created.window] = {areaOf(created), created.override_redirect != 0, false};
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto &configured = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        windows_[configured.window].area = areaOf(configured);
        break;
    }
    case XCB_MAP_NOTIFY: {
        const auto &mapped = reinterpret_cast<const xcb_map_notify_event_t &>(event);
        windows_[mapped.window].isUnmanaged = mapped.override_redirect != 0;
        windows_[mapped.window].isMapped = true;
        break;
    }
    case XCB_UNMAP_NOTIFY:
        windows_[reinterpret_cast<const xcb_unmap_notify_event_t &>(event).window].isMapped = false;
        break;
    case XCB_DESTROY_NOTIFY:
        windows_.erase(reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window);
        break;
    default:
        break;
    }
}

void UnmanagedWindows::refresh() {
    std::vector<drawing::PixelRect> areas;
    for (const auto &[identifier, window] : windows_) {
        if (window.isUnmanaged && window.isMapped) {
            areas.push_back(window.area);
        }
    }
    if (std::exchange(areas_, std::move(areas)) != areas_ && changed_) {
        changed_();
    }
}

} // namespace lumo::wayland::sway
