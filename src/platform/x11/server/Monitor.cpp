#include "platform/x11/server/Monitor.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

// FNV-1a, 32 bit; its published constants.
std::uint32_t hash(std::string_view text) {
    std::uint32_t value = 2166136261;
    for (const char character : text) {
        value = (value ^ static_cast<std::uint8_t>(character)) * 16777619;
    }
    return value;
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

std::vector<Monitor> apart(std::vector<Monitor> monitors, const drawing::PixelRect &root) {
    for (auto &monitor : monitors) {
        monitor.area = monitor.area.intersection(root);
    }
    std::erase_if(monitors, [](const auto &monitor) { return monitor.area.isEmpty(); });
    while (separateTwo(monitors)) {
    }
    return monitors;
}

std::vector<std::uint32_t> identifiersOf(const std::vector<Monitor> &monitors) {
    std::vector<std::string> keys;
    keys.reserve(monitors.size());
    for (const auto &monitor : monitors) {
        keys.push_back(monitor.name + '\n' + monitor.description);
    }
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

} // namespace lumo::x11
