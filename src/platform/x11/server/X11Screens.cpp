#include "platform/x11/server/X11Screens.h"

#include "platform/MainLoop.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/PropertyReply.h"
#include "platform/x11/server/ResourceScale.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t monitorsBit = 1;
constexpr std::uint32_t resourcesBit = 2;

// Seconds without an event after which a burst is over, and after which it is not waited for.
constexpr double quietTime = 0.1;
constexpr double longestBurst = 0.5;

// In units of four bytes.
constexpr std::uint32_t maximumResourcesLength = 65536;
constexpr std::uint32_t maximumDescriptionLength = 1024;

} // namespace

X11Screens::X11Screens(Connection &connection, MainLoop &mainLoop)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , edid_(connection.atom("EDID"))
    , replies_(connection)
    , root_{0, 0, connection.screen().width_in_pixels, connection.screen().height_in_pixels} {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment while threads run.
    const char *factor = std::getenv("QT_SCALE_FACTOR");
    userScale_ = factor == nullptr ? 1 : positiveNumber(factor).value_or(1);
    connection.selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
    if (connection.extensions().randr) {
        xcb_randr_select_input(
            connection, connection.root(),
            XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_PROPERTY);
    }
    auto &events = connection.events();
    events_ = {events.on(event::configureNotify, connection.root(),
                         [this](const auto &configure) {
                             root_ = {0, 0, configure.width, configure.height};
                             // Also without a change of size: a monitor that was made or removed by
                             // hand shows itself by nothing else.
                             readWhenQuiet(monitorsBit);
                         }),
               events.on(event::propertyNotify, connection.root(),
                         [this](const auto &property) {
                             if (property.atom == XCB_ATOM_RESOURCE_MANAGER) {
                                 readWhenQuiet(resourcesBit);
                             }
                         }),
               events.on(event::randrNotify, [this](const auto &) { readWhenQuiet(monitorsBit); }),
               events.on(event::randrScreenChangeNotify,
                         [this](const auto &) { readWhenQuiet(monitorsBit); })};
    batches_ = connection.onDispatched([this] {
        if (!quiet_) {
            requestReads();
        }
    });
    reads_.want(monitorsBit | resourcesBit);
    requestReads();
    // What happens meanwhile may be read later.
    connection.dispatchUntil([this] { return replies_.isEmpty(); });
}

X11Screens::~X11Screens() = default;

Handle X11Screens::onScreenParametersDidChange(std::function<void()> observer) {
    return changes_.subscribe(std::move(observer));
}

void X11Screens::readWhenQuiet(std::uint32_t parts) {
    reads_.want(parts);
    const double now = mainLoop_.now();
    if (!quiet_) {
        burstBeganAt_ = now;
    }
    const double wait = std::min(quietTime, burstBeganAt_ + longestBurst - now);
    quiet_ = mainLoop_.after(std::max(wait, 0.0), [this] {
        quiet_.reset();
        requestReads();
    });
}

void X11Screens::requestReads() {
    const auto now = reads_.begin();
    if ((now & monitorsBit) != 0) {
        readMonitors();
    }
    if ((now & resourcesBit) != 0) {
        replies_.add<xcb_get_property_reply_t>(
            xcb_get_property(connection_, 0, connection_.root(), XCB_ATOM_RESOURCE_MANAGER,
                             XCB_GET_PROPERTY_TYPE_ANY, 0, maximumResourcesLength),
            [this](const auto *reply) {
                reads_.finished(resourcesBit);
                resourceScale_ = scaleOfResources(bytes(reply));
                update();
            });
    }
}

void X11Screens::readMonitors() {
    if (!connection_.extensions().randr) {
        finishMonitors({{root_, true, "root", {}}});
        return;
    }
    replies_.add<xcb_randr_get_monitors_reply_t>(
        xcb_randr_get_monitors(connection_, connection_.root(), 1),
        [this](const auto *reply) { applyMonitors(reply); });
}

void X11Screens::applyMonitors(const xcb_randr_get_monitors_reply_t *reply) {
    auto found = std::make_shared<std::vector<Monitor>>();
    if (reply != nullptr) {
        for (auto each = xcb_randr_get_monitors_monitors_iterator(reply); each.rem > 0;
             xcb_randr_monitor_info_next(&each)) {
            found->push_back({{each.data->x, each.data->y, each.data->width, each.data->height},
                              each.data->primary != 0,
                              {},
                              {}});
            readMonitor(found, found->size() - 1, *each.data);
        }
    }
    // Replies come in order, so after this one all about each monitor is there.
    replies_.add<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_),
        [this, found](const auto *) { finishMonitors(std::move(*found)); });
}

void X11Screens::readMonitor(const std::shared_ptr<std::vector<Monitor>> &found, std::size_t index,
                             const xcb_randr_monitor_info_t &info) {
    replies_.add<xcb_get_atom_name_reply_t>(
        xcb_get_atom_name(connection_, info.name), [found, index](const auto *reply) {
            if (reply != nullptr) {
                (*found)[index].name = {
                    xcb_get_atom_name_name(reply),
                    static_cast<std::size_t>(xcb_get_atom_name_name_length(reply))};
            }
        });
    if (xcb_randr_monitor_info_outputs_length(&info) == 0) {
        return;
    }
    replies_.add<xcb_randr_get_output_property_reply_t>(
        xcb_randr_get_output_property(connection_, *xcb_randr_monitor_info_outputs(&info), edid_,
                                      XCB_GET_PROPERTY_TYPE_ANY, 0, maximumDescriptionLength, 0, 0),
        [found, index](const auto *reply) {
            if (reply != nullptr && reply->format == 8) {
                (*found)[index].description = {
                    reinterpret_cast<const char *>(xcb_randr_get_output_property_data(reply)),
                    static_cast<std::size_t>(xcb_randr_get_output_property_data_length(reply))};
            }
        });
}

void X11Screens::finishMonitors(std::vector<Monitor> found) {
    reads_.finished(monitorsBit);
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.isPrimary && !b.isPrimary; });
    monitors_ = apart(std::move(found), root_);
    update();
}

void X11Screens::update() {
    std::vector<drawing::PixelRect> areas;
    for (const auto &monitor : monitors_) {
        areas.push_back(monitor.area);
    }
    const drawing::PointSpace space(areas, resourceScale_ * userScale_);
    const auto identifiers = identifiersOf(monitors_);
    std::vector<Screen> screens;
    for (std::size_t i = 0; i < areas.size(); ++i) {
        screens.push_back({identifiers[i], space.screenFrame(areas[i]), space.scale()});
    }
    if (screens == screens_ && areas == pixelRects_ && space == pointSpace_) {
        return;
    }
    screens_ = std::move(screens);
    pixelRects_ = std::move(areas);
    pointSpace_ = space;
    ++revision_;
    changes_.emit();
}

} // namespace lumo::x11
