#include "platform/x11/server/X11Screens.h"

#include "platform/MainLoop.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/PropertyReply.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <locale>
#include <optional>
#include <sstream>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint32_t monitorsBit = 1;
constexpr std::uint32_t resourcesBit = 2;

constexpr double longestStart = 2;

// Seconds without an event after which a burst is over, and after which it is not waited for.
constexpr double quietTime = 0.1;
constexpr double longestBurst = 0.5;

// In units of four bytes.
constexpr std::uint32_t maximumResourcesLength = 65536;
constexpr std::uint32_t maximumDescriptionLength = 1024;

std::optional<double> parseNumber(std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double number = 0;
    if (!(stream >> number) || !std::isfinite(number) || number <= 0) {
        return std::nullopt;
    }
    return number;
}

// FNV-1a, 32 bit; its published constants.
std::uint32_t hash(std::string_view text) {
    std::uint32_t value = 2166136261;
    for (const char character : text) {
        value = (value ^ static_cast<std::uint8_t>(character)) * 16777619;
    }
    return value;
}

// Identifiers of displays by their keys: none is 0 and no two are the same. In one set of displays
// each gets the same one whatever the order, and the same in every set unless two of them clash.
std::vector<std::uint32_t> identifiersOf(const std::vector<std::string> &keys) {
    std::vector<std::size_t> order(keys.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    std::stable_sort(order.begin(), order.end(), [&](auto a, auto b) { return keys[a] < keys[b]; });
    std::vector<std::uint32_t> identifiers(keys.size(), 0);
    for (const auto i : order) {
        auto identifier = hash(keys[i]);
        while (identifier == 0 ||
               std::find(identifiers.begin(), identifiers.end(), identifier) != identifiers.end()) {
            ++identifier;
        }
        identifiers[i] = identifier;
    }
    return identifiers;
}

// The part of an area that is not taken, where that is one rectangle.
std::optional<drawing::PixelRect> restOf(const drawing::PixelRect &area,
                                         const drawing::PixelRect &taken) {
    const auto common = area.intersection(taken);
    if (common.height == area.height) {
        if (common.x == area.x) {
            return drawing::PixelRect{common.maxX(), area.y, area.maxX() - common.maxX(),
                                      area.height};
        }
        if (common.maxX() == area.maxX()) {
            return drawing::PixelRect{area.x, area.y, common.x - area.x, area.height};
        }
    } else if (common.width == area.width) {
        if (common.y == area.y) {
            return drawing::PixelRect{area.x, common.maxY(), area.width,
                                      area.maxY() - common.maxY()};
        }
        if (common.maxY() == area.maxY()) {
            return drawing::PixelRect{area.x, area.y, area.width, common.y - area.y};
        }
    }
    return std::nullopt;
}

// Settles what two monitors have in common; false when no two have anything.
bool separateTwo(std::vector<Monitor> &monitors) {
    for (auto first = monitors.begin(); first != monitors.end(); ++first) {
        for (auto second = first + 1; second != monitors.end(); ++second) {
            const auto common = first->area.intersection(second->area);
            if (common.isEmpty()) {
                continue;
            }
            const bool isAllOfOne = common == first->area || common == second->area;
            const auto rest = restOf(second->area, first->area);
            if (!isAllOfOne && rest) {
                second->area = *rest;
            } else {
                first->area = first->area.united(second->area);
                monitors.erase(second);
            }
            return true;
        }
    }
    return false;
}

} // namespace

std::vector<Monitor> apart(std::vector<Monitor> monitors) {
    std::erase_if(monitors, [](const auto &monitor) { return monitor.area.isEmpty(); });
    while (separateTwo(monitors)) {
    }
    return monitors;
}

double scaleOfResources(std::string_view resources) {
    constexpr std::string_view key = "Xft.dpi:";
    double scale = 1;
    while (!resources.empty()) {
        const auto line = resources.substr(0, resources.find('\n'));
        resources.remove_prefix(std::min(resources.size(), line.size() + 1));
        if (line.starts_with(key)) {
            if (const auto dpi = parseNumber(line.substr(key.size()))) {
                scale = std::max(1.0, std::round(*dpi / 96 * 4) / 4);
            }
        }
    }
    return scale;
}

X11Screens::X11Screens(Connection &connection, MainLoop &mainLoop)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , edid_(connection.atom("EDID"))
    , replies_(connection)
    , root_{0, 0, connection.screen().width_in_pixels, connection.screen().height_in_pixels} {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment while threads run.
    const char *factor = std::getenv("QT_SCALE_FACTOR");
    userScale_ = factor == nullptr ? 1 : parseNumber(factor).value_or(1);
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
    connection.dispatchUntil([this] { return replies_.isEmpty(); }, longestStart);
}

X11Screens::~X11Screens() = default;

Handle X11Screens::onScreenParametersDidChange(std::function<void()> observer) {
    return changes_.subscribe(std::move(observer));
}

void X11Screens::readWhenQuiet(std::uint32_t things) {
    reads_.want(things);
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
    monitors_ = apart(std::move(found));
    update();
}

void X11Screens::update() {
    std::vector<drawing::PixelRect> areas;
    std::vector<std::string> keys;
    for (const auto &monitor : monitors_) {
        areas.push_back(monitor.area);
        keys.push_back(monitor.name + '\n' + monitor.description);
    }
    const drawing::PointSpace space(areas, resourceScale_ * userScale_);
    const auto identifiers = identifiersOf(keys);
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
