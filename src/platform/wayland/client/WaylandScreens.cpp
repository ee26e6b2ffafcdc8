#include "platform/wayland/client/WaylandScreens.h"

#include "platform/wayland/client/Connection.h"

#include <xdg-output-unstable-v1-client-protocol.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <tuple>
#include <utility>

namespace lumo::wayland {

namespace {

constexpr std::uint32_t outputVersion = 4;
constexpr std::uint32_t managerVersion = 3;

// FNV-1a, 32 bit; its published constants.
std::uint32_t hash(std::string_view text) {
    std::uint32_t value = 2166136261;
    for (const char character : text) {
        value = (value ^ static_cast<std::uint8_t>(character)) * 16777619;
    }
    return value;
}

} // namespace

double scaleOf(const drawing::PixelRect &area, int modeWidth, int modeHeight, bool isTurned) {
    constexpr double steps = 120;
    const int width = isTurned ? modeHeight : modeWidth;
    const int height = isTurned ? modeWidth : modeHeight;
    if (area.isEmpty() || width <= 0 || height <= 0) {
        return 1;
    }
    // The longer side tells more, since the compositor has rounded both to points.
    const double ratio = area.width >= area.height ? static_cast<double>(width) / area.width
                                                   : static_cast<double>(height) / area.height;
    return std::max(std::round(ratio * steps), 1.0) / steps;
}

// A display as its events tell of it.
struct WaylandScreens::Display {
    Display(WaylandScreens &owner, const Connection::Global &global)
        : screens(owner)
        , name(global.name)
        , output(owner.connection_.bind<wl_output>(global, wl_output_interface, outputVersion))
        , described(zxdg_output_manager_v1_get_xdg_output(owner.manager_.get(), output.get())) {
        listen();
    }

    void listen();

    bool isComplete() const { return !area.isEmpty(); }

    Output asOutput() const {
        constexpr std::int32_t quarterTurn = 1; // set in all transforms that swap the sides
        return {name, output.get(), label, area,
                scaleOf(area, modeWidth, modeHeight, (transform & quarterTurn) != 0)};
    }

    WaylandScreens &screens;
    std::uint32_t name;
    std::string label;
    std::string model;
    std::int32_t transform = 0;
    int modeWidth = 0;
    int modeHeight = 0;
    drawing::PixelRect area;
    ProtocolPointer<wl_output> output;
    ProtocolPointer<zxdg_output_v1> described;
};

void WaylandScreens::Display::listen() {
    static const wl_output_listener outputListener = {
        .geometry =
            [](void *data, wl_output *, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
               std::int32_t, const char *make, const char *madeAs, std::int32_t turn) {
                auto &self = *static_cast<Display *>(data);
                self.model = std::string(make) + '\n' + madeAs;
                self.transform = turn;
                self.screens.isStale_ = true;
            },
        .mode =
            [](void *data, wl_output *, std::uint32_t flags, std::int32_t width,
               std::int32_t height, std::int32_t) {
                auto &self = *static_cast<Display *>(data);
                if ((flags & WL_OUTPUT_MODE_CURRENT) != 0) {
                    self.modeWidth = width;
                    self.modeHeight = height;
                    self.screens.isStale_ = true;
                }
            },
        .done = [](void *, wl_output *) {},
        .scale = [](void *, wl_output *, std::int32_t) {},
        .name = [](void *, wl_output *, const char *) {},
        .description = [](void *, wl_output *, const char *) {}};
    static const zxdg_output_v1_listener describedListener = {
        .logical_position =
            [](void *data, zxdg_output_v1 *, std::int32_t x, std::int32_t y) {
                auto &self = *static_cast<Display *>(data);
                self.area.x = x;
                self.area.y = y;
                self.screens.isStale_ = true;
            },
        .logical_size =
            [](void *data, zxdg_output_v1 *, std::int32_t width, std::int32_t height) {
                auto &self = *static_cast<Display *>(data);
                self.area.width = width;
                self.area.height = height;
                self.screens.isStale_ = true;
            },
        .done = [](void *, zxdg_output_v1 *) {},
        .name =
            [](void *data, zxdg_output_v1 *, const char *connector) {
                auto &self = *static_cast<Display *>(data);
                self.label = connector;
                self.screens.isStale_ = true;
            },
        .description = [](void *, zxdg_output_v1 *, const char *) {}};
    wl_output_add_listener(output.get(), &outputListener, this);
    zxdg_output_v1_add_listener(described.get(), &describedListener, this);
}

WaylandScreens::WaylandScreens(Connection &connection)
    : connection_(connection)
    , manager_(connection.bind<zxdg_output_manager_v1>(zxdg_output_manager_v1_interface,
                                                       managerVersion)) {
    const auto isOutput = [](const Connection::Global &global) {
        return global.interface == wl_output_interface.name;
    };
    for (const auto &global : connection.globals()) {
        if (isOutput(global)) {
            displays_.push_back(std::make_unique<Display>(*this, global));
        }
    }
    events_ = {connection.onGlobalAdded([this, isOutput](const auto &global) {
                   if (isOutput(global)) {
                       displays_.push_back(std::make_unique<Display>(*this, global));
                   }
               }),
               connection.onGlobalRemoved([this](const auto &global) {
                   if (std::erase_if(displays_, [&](const auto &display) {
                           return display->name == global.name;
                       }) > 0) {
                       isStale_ = true;
                   }
               }),
               connection.onDispatched([this] { update(); })};
    connection.roundTrip();
}

WaylandScreens::~WaylandScreens() = default;

Handle WaylandScreens::onScreenParametersDidChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

const Output *WaylandScreens::outputOfFrame(const Rect &frame) const {
    const auto found = std::ranges::find(screens_, frame, &Screen::frame);
    return found != screens_.end() ? &outputs_[static_cast<std::size_t>(found - screens_.begin())]
                                   : nullptr;
}

void WaylandScreens::update() {
    if (!std::exchange(isStale_, false)) {
        return;
    }
    std::vector<const Display *> complete;
    for (const auto &display : displays_) {
        if (display->isComplete()) {
            complete.push_back(display.get());
        }
    }
    std::ranges::sort(complete, {}, [](const Display *display) {
        const auto &area = display->area;
        return std::make_tuple(std::abs(area.x) + std::abs(area.y), area.x, display->label);
    });
    outputs_.clear();
    std::vector<drawing::PixelRect> areas;
    for (const auto *display : complete) {
        outputs_.push_back(display->asOutput());
        areas.push_back(display->area);
    }
    pointSpace_ = drawing::PointSpace(areas, 1);
    std::vector<Screen> screens;
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
        auto number = hash(outputs_[i].name + '\n' + complete[i]->model);
        while (std::ranges::find(screens, std::optional(number), &Screen::number) !=
               screens.end()) {
            ++number;
        }
        screens.push_back({number, pointSpace_.screenFrame(outputs_[i].area), outputs_[i].scale});
    }
    if (std::exchange(screens_, std::move(screens)) != screens_) {
        changed_.emit();
    }
}

} // namespace lumo::wayland
