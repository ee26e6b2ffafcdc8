#include "platform/x11/server/Connection.h"

#include "platform/x11/server/XcbXkb.h"

#include <poll.h>
#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

namespace lumo::x11 {

namespace {

xcb_screen_t *findScreen(const xcb_setup_t &setup, int number) {
    auto screens = xcb_setup_roots_iterator(&setup);
    for (; number > 0 && screens.rem > 1; --number) {
        xcb_screen_next(&screens);
    }
    return screens.data;
}

using Version = std::pair<std::uint32_t, std::uint32_t>;

// One of the extensions: how to ask for its version, and which one is needed at least.
struct ExtensionRow {
    xcb_extension_t *extension;
    bool Extensions::*isOffered;
    Version needed;
    std::uint32_t (*askVersion)(xcb_connection_t *); // returns the request's sequence number
    Version (*versionIn)(const void *reply);
    std::optional<EventSource> events = {};
};

template <class Reply>
Version versionIn(const void *memory) {
    const auto &reply = *static_cast<const Reply *>(memory);
    if constexpr (requires { reply.major_version; }) {
        return {reply.major_version, reply.minor_version};
    } else if constexpr (requires { reply.server_major; }) {
        return {reply.server_major, reply.server_minor};
    } else {
        return reply.supported != 0 ? Version{reply.serverMajor, reply.serverMinor} : Version();
    }
}

constexpr auto extensionTable = std::to_array<ExtensionRow>({
    {&xcb_composite_id,
     &Extensions::composite,
     {0, 3},
     [](auto *c) { return xcb_composite_query_version(c, 0, 4).sequence; },
     versionIn<xcb_composite_query_version_reply_t>},
    {&xcb_damage_id,
     &Extensions::damage,
     {0, 0},
     [](auto *c) { return xcb_damage_query_version(c, 1, 1).sequence; },
     versionIn<xcb_damage_query_version_reply_t>,
     EventSource::damage},
    {&xcb_randr_id,
     &Extensions::randr,
     {1, 5},
     [](auto *c) { return xcb_randr_query_version(c, 1, 5).sequence; },
     versionIn<xcb_randr_query_version_reply_t>,
     EventSource::randr},
    {&xcb_render_id,
     &Extensions::render,
     {0, 10},
     [](auto *c) { return xcb_render_query_version(c, 0, 11).sequence; },
     versionIn<xcb_render_query_version_reply_t>},
    {&xcb_res_id,
     &Extensions::resource,
     {1, 2},
     [](auto *c) { return xcb_res_query_version(c, 1, 2).sequence; },
     versionIn<xcb_res_query_version_reply_t>},
    {&xcb_shape_id,
     &Extensions::shape,
     {1, 1},
     [](auto *c) { return xcb_shape_query_version(c).sequence; },
     versionIn<xcb_shape_query_version_reply_t>,
     EventSource::shape},
    {&xcb_shm_id,
     &Extensions::shm,
     {1, 2},
     [](auto *c) { return xcb_shm_query_version(c).sequence; },
     versionIn<xcb_shm_query_version_reply_t>},
    {&xcb_xfixes_id,
     &Extensions::xfixes,
     {2, 0},
     [](auto *c) { return xcb_xfixes_query_version(c, 5, 0).sequence; },
     versionIn<xcb_xfixes_query_version_reply_t>,
     EventSource::xfixes},
    {&xcb_input_id,
     &Extensions::xinput,
     {2, 2},
     [](auto *c) { return xcb_input_xi_query_version(c, 2, 2).sequence; },
     versionIn<xcb_input_xi_query_version_reply_t>,
     EventSource::xinput},
    {&xcb_xkb_id,
     &Extensions::xkb,
     {1, 0},
     [](auto *c) { return xcb_xkb_use_extension(c, 1, 0).sequence; },
     versionIn<xcb_xkb_use_extension_reply_t>,
     EventSource::xkb},
});

// True when a comes after b, with sequence numbers that wrap around.
bool isAfter(std::uint32_t a, std::uint32_t b) {
    return static_cast<std::int32_t>(a - b) > 0;
}

} // namespace

void FreeDeleter::operator()(void *memory) const noexcept {
    std::free(memory);
}

std::unique_ptr<Connection> Connection::open(const char *displayName) {
    int screenNumber = 0;
    xcb_connection_t *connection = xcb_connect(displayName, &screenNumber);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return nullptr;
    }
    return std::unique_ptr<Connection>(new Connection(
        connection, displayName != nullptr ? displayName : std::string(), screenNumber));
}

Connection::Connection(xcb_connection_t *connection, std::string displayName, int screenNumber)
    : connection_(connection)
    , displayName_(std::move(displayName))
    , screen_(findScreen(*xcb_get_setup(connection), screenNumber))
    , screenNumber_(screenNumber) {
    negotiateExtensions();
}

Connection::~Connection() {
    xcb_disconnect(connection_);
}

void Connection::negotiateExtensions() {
    for (const auto &row : extensionTable) {
        xcb_prefetch_extension_data(connection_, row.extension);
    }
    std::array<std::uint32_t, extensionTable.size()> sequences{}; // 0: not there
    for (std::size_t i = 0; i < extensionTable.size(); ++i) {
        const auto *data = xcb_get_extension_data(connection_, extensionTable[i].extension);
        if (data != nullptr && data->present != 0) {
            sequences[i] = extensionTable[i].askVersion(connection_);
        }
    }
    for (std::size_t i = 0; i < extensionTable.size(); ++i) {
        const auto &row = extensionTable[i];
        const XcbPointer<void> reply(
            sequences[i] == 0 ? nullptr : xcb_wait_for_reply(connection_, sequences[i], nullptr));
        extensions_.*row.isOffered = reply && row.versionIn(reply.get()) >= row.needed;
        if (extensions_.*row.isOffered && row.events) {
            const auto *data = xcb_get_extension_data(connection_, row.extension);
            events_.addExtension(*row.events, *row.events == EventSource::xinput
                                                  ? data->major_opcode
                                                  : data->first_event);
        }
    }
}

const xcb_visualtype_t *Connection::visual(xcb_visualid_t id) const {
    for (auto depths = xcb_screen_allowed_depths_iterator(screen_); depths.rem > 0;
         xcb_depth_next(&depths)) {
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem > 0;
             xcb_visualtype_next(&visuals)) {
            if (visuals.data->visual_id == id) {
                return visuals.data;
            }
        }
    }
    return nullptr;
}

xcb_atom_t Connection::atom(std::string_view name) {
    if (const auto known = atoms_.find(std::string(name)); known != atoms_.end()) {
        return known->second;
    }
    internAtoms({name});
    return atoms_[std::string(name)];
}

void Connection::internAtoms(std::initializer_list<std::string_view> names) {
    internAtoms(std::span(names.begin(), names.size()));
}

void Connection::internAtoms(std::span<const std::string_view> names) {
    std::vector<std::pair<std::string, xcb_intern_atom_cookie_t>> cookies;
    for (const auto name : names) {
        cookies.emplace_back(
            name,
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    }
    for (const auto &[name, cookie] : cookies) {
        const auto reply = wait(cookie, xcb_intern_atom_reply);
        atoms_[name] = reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    }
}

Handle Connection::onDispatched(std::function<void()> observer) {
    return dispatched_.subscribe(std::move(observer));
}

void Connection::selectRootEvents(std::uint32_t eventMask) {
    rootEventMask_ |= eventMask;
    xcb_change_window_attributes(connection_, root(), XCB_CW_EVENT_MASK, &rootEventMask_);
}

bool Connection::isOwn(xcb_window_t window) const {
    return (window & ~setup().resource_id_mask) == setup().resource_id_base;
}

void Connection::awaitReply(std::uint32_t sequence, ReplyFunction function) {
    pendingReplies_.push_back({sequence, std::move(function)});
}

void Connection::whenHandled(xcb_void_cookie_t cookie, std::function<void(bool)> function) {
    awaitReply(cookie.sequence,
               [function = std::move(function)](const void *, bool failed) { function(!failed); });
    // The server says nothing of a success; the reply to a later request does.
    awaitReply(xcb_get_input_focus(connection_).sequence, [](const void *, bool) {});
}

bool Connection::firstReplyHasArrived() {
    if (firstReplyArrived_ || pendingReplies_.empty()) {
        return firstReplyArrived_;
    }
    void *reply = nullptr;
    xcb_generic_error_t *error = nullptr;
    if (xcb_poll_for_reply(connection_, pendingReplies_.front().sequence, &reply, &error) != 0) {
        arrivedReply_.reset(reply);
        arrivedFailure_ = error != nullptr;
        firstReplyArrived_ = true;
        std::free(error);
    }
    return firstReplyArrived_;
}

void Connection::deliverFirstReply() {
    const auto function = std::move(pendingReplies_.front().function);
    const auto reply = std::move(arrivedReply_);
    pendingReplies_.pop_front();
    firstReplyArrived_ = false;
    function(reply.get(), arrivedFailure_);
}

XcbPointer<xcb_generic_event_t> Connection::nextEvent() {
    if (undispatchedEvent_) {
        return std::move(undispatchedEvent_);
    }
    return XcbPointer<xcb_generic_event_t>(xcb_poll_for_event(connection_));
}

void Connection::dispatch() {
    while (true) {
        if (const auto event = nextEvent()) {
            if (event->response_type == 0) {
                continue; // an error of a request without a reply
            }
            // A reply to a request that the server had handled before this event comes first.
            while (firstReplyHasArrived() &&
                   !isAfter(pendingReplies_.front().sequence, event->full_sequence)) {
                deliverFirstReply();
            }
            events_.route(*event);
        } else if (!firstReplyHasArrived()) {
            break;
        } else if (undispatchedEvent_.reset(xcb_poll_for_queued_event(connection_));
                   !undispatchedEvent_) {
            // The functions' own requests may have made libxcb read events that come first.
            deliverFirstReply();
        }
    }
    dispatched_.emit();
}

bool Connection::dispatchUntil(const std::function<bool()> &condition, double seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition()) {
        const std::chrono::duration<double> left = deadline - std::chrono::steady_clock::now();
        if (left.count() <= 0 || isLost()) {
            return false;
        }
        flush();
        if (!hasUndispatched()) {
            pollfd ready{fileDescriptor(), POLLIN, 0};
            poll(&ready, 1, static_cast<int>(left.count() * 1000) + 1);
        }
        dispatch();
    }
    return true;
}

bool Connection::hasUndispatched() {
    if (!undispatchedEvent_) {
        undispatchedEvent_.reset(xcb_poll_for_queued_event(connection_));
    }
    return undispatchedEvent_ || firstReplyHasArrived();
}

void Connection::flush() {
    xcb_flush(connection_);
}

bool Connection::isLost() const {
    return xcb_connection_has_error(connection_) != 0;
}

int Connection::fileDescriptor() const {
    return xcb_get_file_descriptor(connection_);
}

std::uint64_t Connection::bytesSent() const {
    return xcb_total_written(connection_);
}

} // namespace lumo::x11
