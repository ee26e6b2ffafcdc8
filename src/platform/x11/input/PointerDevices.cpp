#include "platform/x11/input/PointerDevices.h"

#include "platform/x11/server/Connection.h"

#include <bit>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t devicesBit = 1;

double toDouble(xcb_input_fp3232_t value) {
    constexpr double fraction = 1.0 / 4294967296.0;
    return value.integral + value.frac * fraction;
}

} // namespace

double PointerAxis::movement(double value, double screenLength) {
    if (!isAbsolute) {
        return value;
    }
    const auto before = std::exchange(last, value);
    if (!before) {
        return 0;
    }
    const double perUnit = maximum > minimum ? screenLength / (maximum - minimum) : 1;
    return (value - *before) * perUnit;
}

PointerDevices::PointerDevices(Connection &connection)
    : connection_(connection)
    , replies_(connection) {
}

void PointerDevices::read() {
    reads_.want(devicesBit);
    request();
}

void PointerDevices::request() {
    if (reads_.begin() == 0) {
        return;
    }
    replies_.add<xcb_input_xi_query_device_reply_t>(
        xcb_input_xi_query_device(connection_, XCB_INPUT_DEVICE_ALL),
        [this](const xcb_input_xi_query_device_reply_t *reply) {
            reads_.finished(devicesBit);
            if (reply != nullptr) {
                apply(reply);
            }
            request();
        });
}

void PointerDevices::apply(const xcb_input_xi_query_device_reply_t *reply) {
    axes_.clear();
    for (auto info = xcb_input_xi_query_device_infos_iterator(reply); info.rem > 0;
         xcb_input_xi_device_info_next(&info)) {
        if (axes_.size() <= info.data->deviceid) {
            axes_.resize(info.data->deviceid + std::size_t{1});
        }
        auto &axes = axes_[info.data->deviceid].emplace();
        for (auto part = xcb_input_xi_device_info_classes_iterator(info.data); part.rem > 0;
             xcb_input_device_class_next(&part)) {
            if (part.data->type != XCB_INPUT_DEVICE_CLASS_TYPE_VALUATOR) {
                continue;
            }
            const auto &axis = reinterpret_cast<const xcb_input_valuator_class_t &>(*part.data);
            if (axis.number < axes.size()) {
                axes.at(axis.number) = {axis.mode == XCB_INPUT_VALUATOR_MODE_ABSOLUTE,
                                        toDouble(axis.min), toDouble(axis.max)};
            }
        }
    }
}

PointerMovement PointerDevices::movement(const xcb_input_raw_motion_event_t &event) {
    if (event.sourceid >= axes_.size() || !axes_[event.sourceid] || event.valuators_len == 0) {
        return {};
    }
    auto &axes = *axes_[event.sourceid];
    const auto mask = *xcb_input_raw_button_press_valuator_mask(&event);
    const auto *value = xcb_input_raw_button_press_axisvalues(&event);
    PointerMovement movement;
    if ((mask & 1U) != 0) {
        movement.x = axes[0].movement(toDouble(*value), connection_.screen().width_in_pixels);
        ++value;
    }
    if ((mask & 2U) != 0) {
        movement.y = axes[1].movement(toDouble(*value), connection_.screen().height_in_pixels);
    }
    return movement;
}

} // namespace lumo::x11
