#include "platform/x11/input/MotionReader.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/server/Connection.h"

#include <utility>

namespace lumo::x11 {

namespace {

constexpr double interval = 1.0 / 60; // seconds from one reading to the next

} // namespace

MotionReader::MotionReader(freedesktop::GlibMainLoop &loop, const Connection &connection,
                           std::function<void(const xcb_input_raw_motion_event_t &)> handle,
                           std::function<void()> finish)
    : loop_(loop)
    , connection_(xcb_connect(
          connection.displayName().empty() ? nullptr : connection.displayName().c_str(), nullptr))
    , root_(connection.root())
    , extension_(xcb_get_extension_data(connection, &xcb_input_id)->major_opcode)
    , handle_(std::move(handle))
    , finish_(std::move(finish)) {
    // The server sends raw events as they are in the version that a client names.
    const auto version = xcb_input_xi_query_version(connection_, 2, 2);
    xcb_discard_reply(connection_, version.sequence);
}

MotionReader::~MotionReader() {
    waiting_.reset();
    xcb_disconnect(connection_);
}

void MotionReader::setEnabled(bool isEnabled) {
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
        // From the devices themselves each event would come a second time.
    } const selection{
        {XCB_INPUT_DEVICE_ALL_MASTER, 1},
        static_cast<std::uint32_t>(isEnabled ? XCB_INPUT_XI_EVENT_MASK_RAW_MOTION : 0)};
    xcb_input_xi_select_events(connection_, root_, 1, &selection.head);
    xcb_flush(connection_);
    waiting_.reset();
    if (isEnabled && xcb_connection_has_error(connection_) == 0) {
        awaitMotion();
    }
}

void MotionReader::awaitMotion() {
    waiting_ = loop_.watch(xcb_get_file_descriptor(connection_), {.prepare = [] { return false; },
                                                                  .dispatch =
                                                                      [this] {
                                                                          readRegularly();
                                                                          readNow();
                                                                          return false;
                                                                      }});
}

void MotionReader::readRegularly() {
    waiting_ = loop_.every(interval, [this] {
        if (!readNow() && xcb_connection_has_error(connection_) == 0) {
            awaitMotion();
        }
    });
}

bool MotionReader::readNow() {
    bool hasMotion = false;
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
        const auto &generic = reinterpret_cast<const xcb_ge_generic_event_t &>(*event);
        if ((event->response_type & 0x7fU) == XCB_GE_GENERIC && generic.extension == extension_ &&
            generic.event_type == XCB_INPUT_RAW_MOTION) {
            handle_(reinterpret_cast<const xcb_input_raw_motion_event_t &>(*event));
            hasMotion = true;
        }
    }
    if (hasMotion) {
        finish_();
    }
    return hasMotion;
}

} // namespace lumo::x11
