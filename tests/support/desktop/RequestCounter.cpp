#include "desktop/RequestCounter.h"

#include "desktop/XcbReply.h"

#include <poll.h>
#include <xcb/res.h>
#include <xcb/xcbext.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace lumo::desktop {

namespace {

// One resource identifier of each connection that the process has.
std::vector<std::uint32_t> connectionsOf(xcb_connection_t *connection, pid_t process) {
    const xcb_res_client_id_spec_t everyone = {XCB_NONE, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const XcbReply<xcb_res_query_client_ids_reply_t> reply(xcb_res_query_client_ids_reply(
        connection, xcb_res_query_client_ids(connection, 1, &everyone), nullptr));
    std::vector<std::uint32_t> clients;
    if (reply) {
        auto id = xcb_res_query_client_ids_ids_iterator(reply.get());
        for (; id.rem > 0; xcb_res_client_id_value_next(&id)) {
            if (xcb_res_client_id_value_value_length(id.data) == 1 &&
                xcb_res_client_id_value_value(id.data)[0] == static_cast<std::uint32_t>(process)) {
                clients.push_back(id.data->spec.client);
            }
        }
    }
    return clients;
}

} // namespace

RequestCounter::RequestCounter(const std::string &displayName, pid_t process)
    : control_(xcb_connect(displayName.c_str(), nullptr))
    , data_(xcb_connect(displayName.c_str(), nullptr)) {
    const std::vector<std::uint32_t> clients = connectionsOf(control_, process);
    const auto *extension = xcb_get_extension_data(control_, &xcb_record_id);
    if (clients.empty() || extension == nullptr || extension->present == 0) {
        throw std::runtime_error("the requests of that process cannot be counted");
    }
    xcb_record_range_t range{};
    range.core_requests = {1, 127};
    range.ext_requests = {.major = {128, 255}, .minor = {0, 65535}};
    context_ = xcb_generate_id(control_);
    xcb_record_create_context(control_, context_, 0, static_cast<std::uint32_t>(clients.size()), 1,
                              clients.data(), &range);
    std::free(xcb_get_input_focus_reply(control_, xcb_get_input_focus(control_), nullptr));
    enabled_ = xcb_record_enable_context(data_, context_).sequence;
    xcb_flush(data_);
    // The first reply says that recording has begun.
    constexpr std::uint8_t startOfData = 4;
    const XcbReply<xcb_record_enable_context_reply_t> first(
        xcb_record_enable_context_reply(data_, {enabled_}, nullptr));
    if (!first || first->category != startOfData) {
        throw std::runtime_error("recording does not begin");
    }
}

RequestCounter::~RequestCounter() {
    xcb_disconnect(data_);
    xcb_disconnect(control_);
}

int RequestCounter::count() {
    readRecorded();
    int total = 0;
    for (const auto &[code, count] : countByCode_) {
        total += count;
    }
    return total;
}

int RequestCounter::countOf(int code) {
    readRecorded();
    return countByCode_[code];
}

std::string RequestCounter::describe() {
    std::ostringstream text;
    for (const auto &[code, count] : countByCode_) {
        text << count << " of request " << code << "; ";
    }
    return text.str();
}

void RequestCounter::readRecorded() {
    // A round trip: what was executed before it has been recorded and sent.
    std::free(xcb_get_input_focus_reply(control_, xcb_get_input_focus(control_), nullptr));
    pollfd source{.fd = xcb_get_file_descriptor(data_), .events = POLLIN, .revents = 0};
    ::poll(&source, 1, 0);
    void *reply = nullptr;
    while (xcb_poll_for_reply(data_, enabled_, &reply, nullptr) == 1 && reply != nullptr) {
        const XcbReply<xcb_record_enable_context_reply_t> part(
            static_cast<xcb_record_enable_context_reply_t *>(reply));
        constexpr std::uint8_t fromClient = 1;
        if (part->category == fromClient) {
            countRequests(
                xcb_record_enable_context_data(part.get()),
                static_cast<std::size_t>(xcb_record_enable_context_data_length(part.get())));
        }
    }
}

void RequestCounter::countRequests(const std::uint8_t *bytes, std::size_t size) {
    for (std::size_t at = 0; at + 4 <= size;) {
        std::uint16_t shortLength = 0;
        std::memcpy(&shortLength, bytes + at + 2, sizeof shortLength);
        std::uint32_t length = shortLength;
        if (length == 0 && at + 8 <= size) { // a big request has its length in the next word
            std::memcpy(&length, bytes + at + 4, sizeof length);
        }
        ++countByCode_[bytes[at]];
        at += std::size_t{4} * std::max(length, 1U);
    }
}

} // namespace lumo::desktop
