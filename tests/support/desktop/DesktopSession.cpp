#include "desktop/DesktopSession.h"

#include "desktop/XcbReply.h"

#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <thread>

namespace lumo::desktop {

namespace {

template <class T, class Cookie>
XcbReply<T> wait(xcb_connection_t *connection, Cookie cookie,
                 T *(*function)(xcb_connection_t *, Cookie, xcb_generic_error_t **)) {
    xcb_generic_error_t *error = nullptr;
    XcbReply<T> reply(function(connection, cookie, &error));
    const XcbReply<xcb_generic_error_t> ignored(error);
    if (!reply && xcb_connection_has_error(connection) != 0) {
        throw std::runtime_error("the X server is gone");
    }
    return reply;
}

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t sourcePager = 2;

// The picture as a pixmap of the root window's depth.
xcb_pixmap_t pixmapOf(xcb_connection_t *connection, const xcb_screen_t &screen,
                      const Picture &picture) {
    const auto width = static_cast<std::uint16_t>(picture.width());
    const xcb_pixmap_t pixmap = xcb_generate_id(connection);
    xcb_create_pixmap(connection, screen.root_depth, pixmap, screen.root, width,
                      static_cast<std::uint16_t>(picture.height()));
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, pixmap, 0, nullptr);
    const auto layout = PixelLayout::of(connection, screen);
    std::vector<std::uint8_t> row(layout.rowBytes(width));
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            layout.write(row.data(), x, picture.at(x, y));
        }
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context, width, 1, 0,
                      static_cast<std::int16_t>(y), 0, screen.root_depth,
                      static_cast<std::uint32_t>(row.size()), row.data());
    }
    xcb_free_gc(connection, context);
    return pixmap;
}

// A grab at this time is never granted, only answered with whether there is one. Were it granted,
// the server would refuse the next one of a program that gives the time of an event before it.
constexpr xcb_timestamp_t refusedTime = 1;

} // namespace

DesktopSession::DesktopSession(const std::string &displayName)
    : displayName_(displayName)
    , connection_(xcb_connect(displayName.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) {
        xcb_disconnect(connection_);
        throw std::runtime_error("cannot connect to the X server " + displayName);
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    layout_ = PixelLayout::of(connection_, *screen_);
}

DesktopSession::~DesktopSession() {
    xcb_disconnect(connection_);
}

xcb_atom_t DesktopSession::atom(std::string_view name) {
    if (const auto known = atoms_.find(name); known != atoms_.end()) {
        return known->second;
    }
    const auto reply =
        wait(connection_,
             xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
             xcb_intern_atom_reply);
    const xcb_atom_t atom = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    atoms_.emplace(name, atom);
    return atom;
}

void DesktopSession::sync() {
    wait(connection_, xcb_get_input_focus(connection_), xcb_get_input_focus_reply);
}

bool DesktopSession::eventually(const std::function<bool()> &condition, Seconds deadline) {
    const double end = now() + deadline.count();
    while (!condition()) {
        if (now() >= end) {
            return false;
        }
        xcb_flush(connection_);
        pauseBriefly();
    }
    return true;
}

std::string DesktopSession::wrongUntilNone(const std::function<std::string()> &look) {
    std::string wrong;
    eventually([&] { return (wrong = look()).empty(); });
    return wrong;
}

bool DesktopSession::remains(const std::function<bool()> &condition, Seconds duration) {
    return !eventually([&] { return !condition(); }, duration);
}

std::vector<xcb_window_t> DesktopSession::stacking() {
    return childrenOf(root());
}

std::vector<xcb_window_t> DesktopSession::childrenOf(xcb_window_t window) {
    const auto tree = wait(connection_, xcb_query_tree(connection_, window), xcb_query_tree_reply);
    if (!tree) {
        return {};
    }
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    return {children, children + xcb_query_tree_children_length(tree.get())};
}

xcb_window_t DesktopSession::frameOf(xcb_window_t window) {
    while (true) {
        const auto tree =
            wait(connection_, xcb_query_tree(connection_, window), xcb_query_tree_reply);
        if (!tree) {
            return XCB_NONE;
        }
        if (tree->parent == root() || tree->parent == XCB_NONE) {
            return window;
        }
        window = tree->parent;
    }
}

bool DesktopSession::isAbove(xcb_window_t upper, xcb_window_t lower) {
    const auto order = stacking();
    const auto high = std::find(order.begin(), order.end(), frameOf(upper));
    const auto low = std::find(order.begin(), order.end(), frameOf(lower));
    return high != order.end() && low != order.end() && low < high;
}

bool DesktopSession::isViewable(xcb_window_t window) {
    const auto attributes = wait(connection_, xcb_get_window_attributes(connection_, window),
                                 xcb_get_window_attributes_reply);
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool DesktopSession::isDrawn(xcb_window_t window) {
    const auto attributes = wait(connection_, xcb_get_window_attributes(connection_, window),
                                 xcb_get_window_attributes_reply);
    return attributes && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

bool DesktopSession::isOverrideRedirect(xcb_window_t window) {
    const auto attributes = wait(connection_, xcb_get_window_attributes(connection_, window),
                                 xcb_get_window_attributes_reply);
    return attributes && attributes->override_redirect != 0;
}

bool DesktopSession::isShaped(xcb_window_t window) {
    const auto extents = wait(connection_, xcb_shape_query_extents(connection_, window),
                              xcb_shape_query_extents_reply);
    return extents && extents->bounding_shaped != 0;
}

Area DesktopSession::areaOf(xcb_window_t window) {
    const auto geometry =
        wait(connection_, xcb_get_geometry(connection_, window), xcb_get_geometry_reply);
    const auto origin =
        wait(connection_, xcb_translate_coordinates(connection_, window, root(), 0, 0),
             xcb_translate_coordinates_reply);
    if (!geometry || !origin) {
        return {};
    }
    return {origin->dst_x, origin->dst_y, geometry->width, geometry->height};
}

Area DesktopSession::frameAreaOf(xcb_window_t window) {
    const auto geometry =
        wait(connection_, xcb_get_geometry(connection_, frameOf(window)), xcb_get_geometry_reply);
    if (!geometry) {
        return {};
    }
    const int borders = 2 * geometry->border_width;
    return {geometry->x, geometry->y, geometry->width + borders, geometry->height + borders};
}

bool DesktopSession::isKeyboardGrabbed() {
    const auto reply = wait(connection_,
                            xcb_grab_keyboard(connection_, 0, root(), refusedTime,
                                              XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                            xcb_grab_keyboard_reply);
    return !reply || reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

bool DesktopSession::isPointerGrabbed() {
    const auto reply = wait(connection_,
                            xcb_grab_pointer(connection_, 0, root(), 0, XCB_GRAB_MODE_ASYNC,
                                             XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, refusedTime),
                            xcb_grab_pointer_reply);
    return !reply || reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

std::string DesktopSession::textOf(xcb_window_t window, xcb_atom_t property) {
    const auto reply = wait(
        connection_, xcb_get_property(connection_, 0, window, property, XCB_ATOM_STRING, 0, 256),
        xcb_get_property_reply);
    if (!reply) {
        return {};
    }
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::string DesktopSession::titleOf(xcb_window_t window) {
    return textOf(window, XCB_ATOM_WM_NAME);
}

std::string DesktopSession::classOf(xcb_window_t window) {
    const std::string both = textOf(window, XCB_ATOM_WM_CLASS);
    const std::size_t instanceEnd = both.find('\0');
    return instanceEnd == std::string::npos ? std::string()
                                            : std::string(both.c_str() + instanceEnd + 1);
}

std::vector<std::uint32_t> DesktopSession::numbers(xcb_window_t window, std::string_view property) {
    const auto reply = wait(connection_,
                            xcb_get_property(connection_, 0, window, atom(property),
                                             XCB_GET_PROPERTY_TYPE_ANY, 0, 1024),
                            xcb_get_property_reply);
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto *values = static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

xcb_window_t DesktopSession::activeWindow() {
    const auto windows = numbers(root(), "_NET_ACTIVE_WINDOW");
    return windows.empty() ? XCB_NONE : windows.front();
}

xcb_window_t DesktopSession::focusedWindow() {
    const auto reply =
        wait(connection_, xcb_get_input_focus(connection_), xcb_get_input_focus_reply);
    return reply ? reply->focus : XCB_NONE;
}

xcb_window_t DesktopSession::selectionOwner(std::string_view selection) {
    const auto reply = wait(connection_, xcb_get_selection_owner(connection_, atom(selection)),
                            xcb_get_selection_owner_reply);
    return reply ? reply->owner : XCB_NONE;
}

xcb_window_t DesktopSession::windowManagerWindow() {
    constexpr std::string_view check = "_NET_SUPPORTING_WM_CHECK";
    const auto window = numbers(root(), check);
    return window.empty() || numbers(window.front(), check) != window ? XCB_NONE : window.front();
}

std::optional<std::string> DesktopSession::windowManagerName() {
    const auto window = windowManagerWindow();
    if (window == XCB_NONE) {
        return std::nullopt;
    }
    const auto reply = wait(connection_,
                            xcb_get_property(connection_, 0, window, atom("_NET_WM_NAME"),
                                             XCB_GET_PROPERTY_TYPE_ANY, 0, 256),
                            xcb_get_property_reply);
    return reply ? std::string(static_cast<const char *>(xcb_get_property_value(reply.get())),
                               static_cast<std::size_t>(xcb_get_property_value_length(reply.get())))
                 : std::string();
}

bool DesktopSession::hasWindowManager() {
    const auto reply = wait(connection_, xcb_get_window_attributes(connection_, root()),
                            xcb_get_window_attributes_reply);
    return reply && (reply->all_event_masks & XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT) != 0;
}

bool DesktopSession::windowManagerTakesWindows() {
    const xcb_window_t probe = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, probe, root(), 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection_, probe);
    const bool taken = eventually([&] { return isViewable(probe); }, Seconds(0.5));
    xcb_destroy_window(connection_, probe);
    const auto isForgotten = [&] {
        const auto clients = numbers(root(), "_NET_CLIENT_LIST");
        return std::find(clients.begin(), clients.end(), probe) == clients.end();
    };
    eventually(isForgotten, Seconds(0.5)); // some never take the last window off the list
    return taken;
}

Picture DesktopSession::picture() {
    return picture(screenArea());
}

Picture DesktopSession::picture(const Area &part) {
    const auto image =
        wait(connection_,
             xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root(),
                           static_cast<std::int16_t>(part.x), static_cast<std::int16_t>(part.y),
                           static_cast<std::uint16_t>(part.width),
                           static_cast<std::uint16_t>(part.height), ~0U),
             xcb_get_image_reply);
    if (!image) {
        throw std::runtime_error("that part of the screen cannot be read");
    }
    const std::uint8_t *bytes = xcb_get_image_data(image.get());
    Picture picture(part.width, part.height);
    for (int y = 0; y < part.height; ++y, bytes += layout_.rowBytes(part.width)) {
        for (int x = 0; x < part.width; ++x) {
            picture.at(x, y) = layout_.read(bytes, x);
        }
    }
    return picture;
}

Picture DesktopSession::stillPicture() {
    Picture last = picture();
    const auto moved = [&] {
        Picture next = picture();
        const bool differs = !next.differenceFrom(last, screenArea()).empty();
        last = std::move(next);
        return differs;
    };
    while (eventually(moved, Seconds(0.2))) {
    }
    return last;
}

Colour DesktopSession::pixel(int x, int y) {
    return picture({x, y, 1, 1}).at(0, 0);
}

void DesktopSession::askWindowManager(xcb_window_t window, std::string_view type,
                                      const std::vector<std::uint32_t> &data) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom(type);
    std::copy(data.begin(), data.end(), message.data.data32);
    xcb_send_event(connection_, 0, root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(connection_);
}

void DesktopSession::activate(xcb_window_t window) {
    askWindowManager(window, "_NET_ACTIVE_WINDOW", {sourcePager, XCB_CURRENT_TIME, XCB_NONE});
}

void DesktopSession::close(xcb_window_t window) {
    if (!windowManagerName()) {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = atom("WM_PROTOCOLS");
        message.data.data32[0] = atom("WM_DELETE_WINDOW");
        xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char *>(&message));
        xcb_flush(connection_);
        return;
    }
    askWindowManager(window, "_NET_CLOSE_WINDOW", {XCB_CURRENT_TIME, sourcePager});
}

void DesktopSession::minimise(xcb_window_t window) {
    constexpr std::uint32_t iconicState = 3;
    askWindowManager(window, "WM_CHANGE_STATE", {iconicState});
}

void DesktopSession::move(xcb_window_t window, int x, int y) {
    const std::array values = {static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)};
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                         values.data());
    xcb_flush(connection_);
}

void DesktopSession::resize(xcb_window_t window, int width, int height) {
    const std::array values = {static_cast<std::uint32_t>(width),
                               static_cast<std::uint32_t>(height)};
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
    xcb_flush(connection_);
}

void DesktopSession::setState(xcb_window_t window, std::string_view state, bool on) {
    askWindowManager(window, "_NET_WM_STATE", {on ? 1U : 0U, atom(state), 0, sourcePager});
}

void DesktopSession::switchToDesktop(std::uint32_t index) {
    askWindowManager(root(), "_NET_CURRENT_DESKTOP", {index, XCB_CURRENT_TIME});
}

void DesktopSession::sendToDesktop(xcb_window_t window, std::uint32_t index) {
    askWindowManager(window, "_NET_WM_DESKTOP", {index, sourcePager});
}

void DesktopSession::setNumbers(xcb_window_t window, std::string_view property,
                                const std::vector<std::uint32_t> &numbers) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property),
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(numbers.size()),
                        numbers.data());
    xcb_flush(connection_);
}

void DesktopSession::setText(xcb_window_t window, std::string_view property, std::string_view type,
                             std::string_view text) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
    xcb_flush(connection_);
}

void DesktopSession::fakeInput(std::uint8_t type, std::uint8_t detail, int x, int y) {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, XCB_NONE,
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
}

void DesktopSession::movePointerTo(int x, int y) {
    fakeInput(XCB_MOTION_NOTIFY, 0, x, y);
    sync();
}

void DesktopSession::movePointerBy(int dx, int dy) {
    fakeInput(XCB_MOTION_NOTIFY, 1, dx, dy);
    sync();
}

void DesktopSession::shakePointer(double reportsPerSecond) {
    constexpr int length = 300;       // pixels of a stroke
    constexpr Seconds duration(0.15); // of a stroke
    constexpr Seconds turning(0.025); // of the hand
    constexpr std::array strokes{1, -1, 1, -1};
    for (const int direction : strokes) {
        const auto start = Clock::now();
        for (int moved = 0, report = 1; moved < length; ++report) {
            const Seconds time(report / reportsPerSecond);
            std::this_thread::sleep_until(start +
                                          std::chrono::duration_cast<Clock::duration>(time));
            const int reached = std::min(length, static_cast<int>(length * (time / duration)));
            if (reached > moved) {
                fakeInput(XCB_MOTION_NOTIFY, 1, direction * (reached - moved), 0);
                xcb_flush(connection_);
            }
            moved = reached;
        }
        std::this_thread::sleep_for(turning);
    }
    sync();
}

void DesktopSession::click(Spot spot, int button) {
    fakeInput(XCB_MOTION_NOTIFY, 0, spot.x, spot.y);
    fakeInput(XCB_BUTTON_PRESS, static_cast<std::uint8_t>(button), 0, 0);
    fakeInput(XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button), 0, 0);
    sync();
}

void DesktopSession::setButton(int button, bool down) {
    fakeInput(down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button), 0,
              0);
    sync();
}

void DesktopSession::press(const std::vector<Key> &chord) {
    for (const Key key : chord) {
        setKey(key, true);
    }
    for (const Key key : std::vector<Key>(chord.rbegin(), chord.rend())) {
        setKey(key, false);
    }
}

void DesktopSession::type(std::string_view lowerCaseLetters) {
    for (const char letter : lowerCaseLetters) {
        press({static_cast<Key>(letter)}); // a letter is its own symbol
    }
}

void DesktopSession::setKey(Key key, bool down) {
    fakeInput(down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycodeOf(key), 0, 0);
    sync();
}

std::uint8_t DesktopSession::keycodeOf(Key key) {
    const xcb_setup_t &setup = *xcb_get_setup(connection_);
    const auto count = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
    const auto mapping =
        wait(connection_, xcb_get_keyboard_mapping(connection_, setup.min_keycode, count),
             xcb_get_keyboard_mapping_reply);
    const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    for (int row = 0; row < count; ++row) {
        if (symbols[std::ptrdiff_t{row} * mapping->keysyms_per_keycode] ==
            static_cast<xcb_keysym_t>(key)) {
            return static_cast<std::uint8_t>(setup.min_keycode + row);
        }
    }
    throw std::runtime_error("the keyboard lacks a key");
}

void DesktopSession::killLastClient() {
    const auto reply =
        wait(connection_, xcb_res_query_clients(connection_), xcb_res_query_clients_reply);
    xcb_window_t last = XCB_NONE;
    for (auto clients = xcb_res_query_clients_clients_iterator(reply.get()); clients.rem > 0;
         xcb_res_client_next(&clients)) {
        last = std::max(last, clients.data->resource_base);
    }
    xcb_kill_client(connection_, last);
    sync();
}

void DesktopSession::setWallpaper(const Picture &picture) {
    // A connection of its own: programs that set the next wallpaper kill the one that owns this.
    xcb_connection_t *setter = xcb_connect(displayName_.c_str(), nullptr);
    xcb_set_close_down_mode(setter, XCB_CLOSE_DOWN_RETAIN_PERMANENT);
    const xcb_pixmap_t pixmap = pixmapOf(setter, *screen_, picture);
    xcb_change_window_attributes(setter, root(), XCB_CW_BACK_PIXMAP, &pixmap);
    xcb_clear_area(setter, 0, root(), 0, 0, 0, 0);
    for (const std::string_view property : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"}) {
        xcb_change_property(setter, XCB_PROP_MODE_REPLACE, root(), atom(property), XCB_ATOM_PIXMAP,
                            32, 1, &pixmap);
    }
    wait(setter, xcb_get_input_focus(setter), xcb_get_input_focus_reply);
    xcb_disconnect(setter);
}

xcb_window_t DesktopSession::openWindow(const Picture &picture) {
    const xcb_pixmap_t pixmap = pixmapOf(connection_, *screen_, picture);
    const xcb_window_t window = xcb_generate_id(connection_);
    xcb_create_window(
        connection_, XCB_COPY_FROM_PARENT, window, root(), 0, 0,
        static_cast<std::uint16_t>(picture.width()), static_cast<std::uint16_t>(picture.height()),
        0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP, &pixmap);
    constexpr std::array<std::uint32_t, 5> withoutDecorations = {2, 0, 0, 0, 0};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_MOTIF_WM_HINTS"),
                        atom("_MOTIF_WM_HINTS"), 32, withoutDecorations.size(),
                        withoutDecorations.data());
    xcb_free_pixmap(connection_, pixmap);
    xcb_map_window(connection_, window);
    sync();
    return window;
}

} // namespace lumo::desktop
