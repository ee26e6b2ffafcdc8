#include "desktop/Outputs.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace lumo::desktop {

namespace {

struct Free {
    void operator()(void *memory) const noexcept { std::free(memory); }
};

template <class T>
using Reply = std::unique_ptr<T, Free>;

void require(bool condition, const char *what) {
    if (!condition) {
        throw std::runtime_error(std::string("the X server refuses ") + what);
    }
}

} // namespace

Outputs::Outputs(const std::string &displayName)
    : connection_(xcb_connect(displayName.c_str(), nullptr))
    , root_(xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root) {
    auto *connection = connection_.get();
    const Reply<xcb_randr_get_screen_resources_reply_t> resources(
        xcb_randr_get_screen_resources_reply(
            connection, xcb_randr_get_screen_resources(connection, root_), nullptr));
    require(resources != nullptr, "to name its outputs");
    const auto *outputs = xcb_randr_get_screen_resources_outputs(resources.get());
    const auto *controllers = xcb_randr_get_screen_resources_crtcs(resources.get());
    const std::size_t count = std::min(resources->num_outputs, resources->num_crtcs);
    outputs_.assign(outputs, outputs + count);
    controllers_.assign(controllers, controllers + count);
    areas_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const Reply<xcb_randr_get_crtc_info_reply_t> info(xcb_randr_get_crtc_info_reply(
            connection, xcb_randr_get_crtc_info(connection, controllers_[i], XCB_CURRENT_TIME),
            nullptr));
        if (info && info->mode != XCB_NONE) {
            areas_[i] = {info->x, info->y, info->width, info->height};
        }
    }
}

xcb_randr_mode_t Outputs::modeFor(std::size_t output, const Area &area) {
    auto &mode = modes_[{area.width, area.height}];
    if (mode == XCB_NONE) {
        const auto width = static_cast<std::uint16_t>(area.width);
        const auto height = static_cast<std::uint16_t>(area.height);
        const std::string name =
            "mode " + std::to_string(area.width) + "x" + std::to_string(area.height);
        xcb_randr_mode_info_t info{};
        info.width = width;
        info.height = height;
        info.hsync_start = static_cast<std::uint16_t>(width + 8);
        info.hsync_end = static_cast<std::uint16_t>(width + 16);
        info.htotal = static_cast<std::uint16_t>(width + 24);
        info.vsync_start = static_cast<std::uint16_t>(height + 1);
        info.vsync_end = static_cast<std::uint16_t>(height + 2);
        info.vtotal = static_cast<std::uint16_t>(height + 3);
        info.dot_clock = std::uint32_t{info.htotal} * info.vtotal * 60;
        info.name_len = static_cast<std::uint16_t>(name.size());
        const Reply<xcb_randr_create_mode_reply_t> reply(xcb_randr_create_mode_reply(
            connection_.get(),
            xcb_randr_create_mode(connection_.get(), root_, info,
                                  static_cast<std::uint32_t>(name.size()), name.data()),
            nullptr));
        require(reply != nullptr, "a mode");
        mode = reply->mode;
    }
    auto &known = modesOfOutputs_[output];
    if (std::ranges::find(known, mode) == known.end()) {
        xcb_randr_add_output_mode(connection_.get(), outputs_.at(output), mode);
        known.push_back(mode);
    }
    return mode;
}

void Outputs::configure(std::size_t output, const Area &area) {
    const bool isOn = area.width > 0;
    const auto mode = isOn ? modeFor(output, area) : xcb_randr_mode_t{XCB_NONE};
    const Reply<xcb_randr_set_crtc_config_reply_t> reply(xcb_randr_set_crtc_config_reply(
        connection_.get(),
        xcb_randr_set_crtc_config(connection_.get(), controllers_.at(output), XCB_CURRENT_TIME,
                                  XCB_CURRENT_TIME, static_cast<std::int16_t>(area.x),
                                  static_cast<std::int16_t>(area.y), mode,
                                  XCB_RANDR_ROTATION_ROTATE_0, isOn ? 1 : 0, &outputs_[output]),
        nullptr));
    require(reply && reply->status == XCB_RANDR_SET_CONFIG_SUCCESS, "a display's place or mode");
    areas_[output] = area;
}

void Outputs::arrange(const std::vector<OutputUse> &uses) {
    auto *connection = connection_.get();
    std::vector<Area> wanted(areas_.size());
    Area whole{0, 0, 64, 64}; // the smallest root window there is
    for (const OutputUse &use : uses) {
        wanted.at(use.output) = use.area;
        whole.width = std::max(whole.width, use.area.right());
        whole.height = std::max(whole.height, use.area.bottom());
    }
    for (std::size_t output = 0; output < wanted.size(); ++output) {
        if (areas_[output] != wanted[output] && areas_[output].width > 0) {
            configure(output, {});
        }
    }
    // Millimetres at 96 pixels per inch.
    const auto length = [](int pixels) { return static_cast<std::uint32_t>(pixels * 254 / 960); };
    xcb_randr_set_screen_size(connection, root_, static_cast<std::uint16_t>(whole.width),
                              static_cast<std::uint16_t>(whole.height), length(whole.width),
                              length(whole.height));
    xcb_randr_output_t primary = XCB_NONE;
    for (const OutputUse &use : uses) {
        if (areas_[use.output] != use.area) {
            configure(use.output, use.area);
        }
        primary = use.isPrimary ? outputs_[use.output] : primary;
    }
    xcb_randr_set_output_primary(connection, root_, primary);
    const Reply<xcb_get_input_focus_reply_t> handled(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace lumo::desktop
