#include "platform/wayland/kwin/PlasmaDesktop.h"

#include <plasma-window-management-client-protocol.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace lumo::wayland::kwin {

namespace {

using nlohmann::json;

constexpr std::uint32_t firstDock = 0x80000000; // beyond the identifiers of windows

bool isOneOf(const std::set<std::string> &places, const std::set<std::string> &shown) {
    return std::ranges::any_of(places,
                               [&](const std::string &place) { return shown.contains(place); });
}

DesktopWindow::Presence presenceOf(const PlasmaWindow &window, const PlasmaDesktop &desktop) {
    using enum DesktopWindow::Presence;
    if ((window.state & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MINIMIZED) != 0) {
        return minimized;
    }
    const bool isOnDesktop =
        (window.state & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ON_ALL_DESKTOPS) != 0 ||
        window.desktops.empty() || isOneOf(window.desktops, desktop.currentDesktops);
    const DesktopFacts::Absentee asAbsentee = {window.process, window.title};
    const bool isAbsent =
        std::ranges::find(desktop.facts.absentees, asAbsentee) != desktop.facts.absentees.end();
    return isOnDesktop && !isAbsent && !desktop.showsDesktop ? shown : elsewhere;
}

DesktopWindow::Layer layerOf(const PlasmaWindow &window) {
    if ((window.state & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_KEEP_ABOVE) != 0) {
        return DesktopWindow::Layer::above;
    }
    return (window.state & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_KEEP_BELOW) != 0
               ? DesktopWindow::Layer::below
               : DesktopWindow::Layer::ordinary;
}

DesktopWindow windowOf(std::uint32_t identifier, const PlasmaWindow &window,
                       const PlasmaDesktop &desktop) {
    const auto has = [&](std::uint32_t bit) { return (window.state & bit) != 0; };
    DesktopWindow result;
    result.identifier = identifier;
    result.application = window.application;
    if (!window.title.empty()) {
        result.title = window.title;
    }
    result.process = window.process;
    result.frame = window.frame;
    result.presence = presenceOf(window, desktop);
    result.layer = layerOf(window);
    result.isFocused = has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) && !desktop.showsDesktop;
    result.isFullScreen = has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_FULLSCREEN);
    result.isMovable = has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MOVABLE);
    result.isInTaskbars = !has(ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_SKIPTASKBAR);
    if (window.parent && desktop.windows.contains(*window.parent)) {
        result.transientFor = window.parent;
    }
    return result;
}

} // namespace

DesktopState stateOf(const PlasmaDesktop &desktop) {
    std::map<std::uint32_t, std::size_t> places;
    for (const auto identifier : desktop.stacking) {
        places.emplace(identifier, places.size());
    }
    std::vector<std::pair<std::size_t, std::uint32_t>> ordered;
    for (const auto &[identifier, window] : desktop.windows) {
        if (window.isComplete) {
            const auto place = places.find(identifier);
            ordered.emplace_back(place != places.end() ? place->second : places.size() + identifier,
                                 identifier);
        }
    }
    std::ranges::sort(ordered);
    DesktopState state;
    for (const auto &[place, identifier] : ordered) {
        state.windows.push_back(windowOf(identifier, desktop.windows.at(identifier), desktop));
    }
    for (const auto &dock : desktop.facts.docks) {
        DesktopWindow window;
        window.identifier = firstDock + static_cast<std::uint32_t>(state.windows.size());
        window.process = dock.process;
        window.frame = dock.frame;
        window.layer = DesktopWindow::Layer::dock;
        window.isInTaskbars = false;
        state.windows.push_back(std::move(window));
    }
    state.shownSpaces = desktop.facts.activity;
    for (const auto &identifier : desktop.currentDesktops) {
        state.shownSpaces += '\n' + identifier;
    }
    return state;
}

std::optional<DesktopFacts> factsOf(std::string_view message) {
    try {
        const auto content = json::parse(message);
        DesktopFacts facts;
        facts.activity = content.at("activity").get<std::string>();
        for (const auto &dock : content.at("docks")) {
            facts.docks.push_back({{dock.at("x").get<int>(), dock.at("y").get<int>(),
                                    dock.at("width").get<int>(), dock.at("height").get<int>()},
                                   dock.at("process").get<std::int32_t>()});
        }
        for (const auto &absentee : content.at("absentees")) {
            facts.absentees.push_back({absentee.at("process").get<std::int32_t>(),
                                       absentee.at("title").get<std::string>()});
        }
        return facts;
    } catch (const json::exception &) {
        return std::nullopt;
    }
}

} // namespace lumo::wayland::kwin
