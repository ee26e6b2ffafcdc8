#include "platform/wayland/sway/SwayTree.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>

namespace lumo::wayland::sway {

namespace {

using nlohmann::json;

drawing::PixelRect rectangle(const json &node, const char *key) {
    const auto &rect = node.at(key);
    return {rect.at("x").get<int>(), rect.at("y").get<int>(), rect.at("width").get<int>(),
            rect.at("height").get<int>()};
}

std::string text(const json &node, const char *key) {
    const auto found = node.find(key);
    return found != node.end() && found->is_string() ? found->get<std::string>() : std::string();
}

class TreeReading {
  public:
    DesktopState read(const json &root) {
        state_.areUsableAreasInGaps = true;
        for (const auto &output : root.at("nodes")) {
            readOutput(output);
        }
        for (auto &window : state_.windows) {
            const auto owner = owners_.find(window.identifier);
            if (owner != owners_.end() && byXWindow_.contains(owner->second)) {
                window.transientFor = byXWindow_.at(owner->second);
            }
        }
        return std::move(state_);
    }

  private:
    void readOutput(const json &output) {
        const auto name = text(output, "name");
        const auto shown = text(output, "current_workspace");
        for (const auto &workspace : output.at("nodes")) {
            if (text(workspace, "type") == "workspace") {
                if (text(workspace, "name") == shown && !shown.empty()) {
                    state_.usableAreas[name] = rectangle(workspace, "rect");
                    state_.shownSpaces.append(name).append("\n").append(shown).append("\n");
                }
                readContainers(workspace, false);
            }
        }
    }

    // Floating containers lie above the tiled ones, in the order of their list.
    void readContainers(const json &parent, bool isFloating) {
        readChildren(parent, "nodes", isFloating);
        readChildren(parent, "floating_nodes", true);
    }

    void readChildren(const json &parent, const char *list, bool areFloating) {
        for (const auto &child : parent.at(list)) {
            if (child.contains("pid")) {
                readWindow(child, parent, areFloating);
            }
            readContainers(child, areFloating);
        }
    }

    void readWindow(const json &node, const json &parent, bool isFloating) {
        DesktopWindow window;
        window.identifier = node.at("id").get<std::uint32_t>();
        window.application = text(node, "app_id");
        if (const auto title = text(node, "name"); !title.empty()) {
            window.title = title;
        }
        window.process = node.at("pid").get<std::int32_t>();
        window.frame = frameOf(node, parent);
        window.presence = node.value("visible", true) ? DesktopWindow::Presence::shown
                                                      : DesktopWindow::Presence::elsewhere;
        window.isFocused = node.value("focused", false);
        window.isFullScreen = node.value("fullscreen_mode", 0) != 0;
        window.isMovable = isFloating;
        readXWindow(node, window);
        state_.windows.push_back(std::move(window));
    }

    // The titles of a stack lie one above the other, over all of its windows.
    static drawing::PixelRect frameOf(const json &node, const json &parent) {
        auto frame = rectangle(node, "rect");
        const auto title = rectangle(node, "deco_rect").height;
        const bool isStacked = text(parent, "layout") == "stacked" && title > 0 &&
                               text(node, "type") != "floating_con";
        const int top = isStacked ? rectangle(parent, "rect").y : frame.y - title;
        frame.height += frame.y - top;
        frame.y = top;
        return frame;
    }

    void readXWindow(const json &node, DesktopWindow &window) {
        const auto properties = node.find("window_properties");
        if (properties == node.end() || !properties->is_object()) {
            return;
        }
        window.application = text(*properties, "class");
        window.isXwayland = true;
        const auto own = node.find("window");
        if (own != node.end() && own->is_number_unsigned()) {
            byXWindow_[own->get<std::uint32_t>()] = window.identifier;
        }
        const auto owner = properties->find("transient_for");
        if (owner != properties->end() && owner->is_number_unsigned()) {
            owners_[window.identifier] = owner->get<std::uint32_t>();
        }
    }

    DesktopState state_;
    std::unordered_map<std::uint32_t, std::uint32_t> byXWindow_; // identifiers
    std::unordered_map<std::uint32_t, std::uint32_t> owners_;    // X windows, by identifier
};

} // namespace

std::optional<DesktopState> desktopOf(std::string_view tree) {
    try {
        return TreeReading().read(json::parse(tree));
    } catch (const json::exception &) {
        return std::nullopt;
    }
}

AskingPace::Movable movableOf(const DesktopState &state) {
    using enum AskingPace::Movable;
    int tiled = 0;
    for (const auto &window : state.windows) {
        if (window.presence != DesktopWindow::Presence::shown || window.isFullScreen) {
            continue;
        }
        if (window.isMovable) {
            return windows;
        }
        ++tiled;
    }
    return tiled > 1 ? tiledEdges : nothing;
}

} // namespace lumo::wayland::sway
