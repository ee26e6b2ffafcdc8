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

#include <chrono>
#include <cstdlib>
#include <limits>
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

bool atLeast(std::uint32_t major, std::uint32_t minor, std::uint32_t wantedMajor,
             std::uint32_t wantedMinor) {
    return major > wantedMajor || (major == wantedMajor && minor >= wantedMinor);
}

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
    for (auto *extension :
         {&xcb_composite_id, &xcb_damage_id, &xcb_randr_id, &xcb_render_id, &xcb_res_id,
          &xcb_shape_id, &xcb_shm_id, &xcb_xfixes_id, &xcb_input_id, &xcb_xkb_id}) {
        xcb_prefetch_extension_data(connection_, extension);
    }
    // Asks for the version of an extension that the server has; gives whether it is recent enough.
    const auto negotiate = [this](xcb_extension_t &extension, std::uint8_t *firstEvent,
                                  auto query) {
        const auto *data = xcb_get_extension_data(connection_, &extension);
        if (data == nullptr || data->present == 0) {
            return false;
        }
        if (firstEvent != nullptr) {
            *firstEvent = data->first_event;
        }
        return query();
    };
    auto &found = extensions_;
    found.composite = negotiate(xcb_composite_id, nullptr, [this] {
        const auto reply =
            wait(xcb_composite_query_version(connection_, 0, 4), xcb_composite_query_version_reply);
        return reply && atLeast(reply->major_version, reply->minor_version, 0, 3);
    });
    found.damage = negotiate(xcb_damage_id, &found.damageFirstEvent, [this] {
        return wait(xcb_damage_query_version(connection_, 1, 1), xcb_damage_query_version_reply) !=
               nullptr;
    });
    found.randr = negotiate(xcb_randr_id, &found.randrFirstEvent, [this] {
        const auto reply =
            wait(xcb_randr_query_version(connection_, 1, 5), xcb_randr_query_version_reply);
        return reply && atLeast(reply->major_version, reply->minor_version, 1, 5);
    });
    found.render = negotiate(xcb_render_id, nullptr, [this] {
        const auto reply =
            wait(xcb_render_query_version(connection_, 0, 11), xcb_render_query_version_reply);
        return reply && atLeast(reply->major_version, reply->minor_version, 0, 10);
    });
    found.resource = negotiate(xcb_res_id, nullptr, [this] {
        const auto reply =
            wait(xcb_res_query_version(connection_, 1, 2), xcb_res_query_version_reply);
        return reply && atLeast(reply->server_major, reply->server_minor, 1, 2);
    });
    found.shape = negotiate(xcb_shape_id, &found.shapeFirstEvent, [this] {
        const auto reply =
            wait(xcb_shape_query_version(connection_), xcb_shape_query_version_reply);
        return reply && atLeast(reply->major_version, reply->minor_version, 1, 1);
    });
    found.shm = negotiate(xcb_shm_id, nullptr, [this] {
        const auto reply = wait(xcb_shm_query_version(connection_), xcb_shm_query_version_reply);
        return reply && atLeast(reply->major_version, reply->minor_version, 1, 2);
    });
    found.xfixes = negotiate(xcb_xfixes_id, &found.xfixesFirstEvent, [this] {
        const auto reply =
            wait(xcb_xfixes_query_version(connection_, 5, 0), xcb_xfixes_query_version_reply);
        return reply && atLeast(reply->major_version, reply->minor_version, 2, 0);
    });
    found.xinput = negotiate(xcb_input_id, nullptr, [this] {
        const auto reply =
            wait(xcb_input_xi_query_version(connection_, 2, 2), xcb_input_xi_query_version_reply);
        return reply && atLeast(reply->major_version, reply->minor_version, 2, 2);
    });
    if (found.xinput) {
        found.xinputOpcode = xcb_get_extension_data(connection_, &xcb_input_id)->major_opcode;
    }
    found.xkb = negotiate(xcb_xkb_id, &found.xkbFirstEvent, [this] {
        const auto reply =
            wait(xcb_xkb_use_extension(connection_, 1, 0), xcb_xkb_use_extension_reply);
        return reply && reply->supported != 0;
    });
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

Handle Connection::onEvent(std::function<void(const xcb_generic_event_t &)> observer) {
    return events_.subscribe(std::move(observer));
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

bool Connection::isServers(xcb_window_t window) const {
    return (window & ~setup().resource_id_mask) == 0;
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
                continue; // an error that nobody waits for
            }
            // A reply to a request that the server had handled before this event comes first.
            while (firstReplyHasArrived() &&
                   !isAfter(pendingReplies_.front().sequence, event->full_sequence)) {
                deliverFirstReply();
            }
            events_.emit(*event);
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
