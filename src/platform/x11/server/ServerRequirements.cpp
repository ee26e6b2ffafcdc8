#include "platform/x11/server/ServerRequirements.h"

#include "platform/x11/server/Connection.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

bool hasTrueColours(const Connection &connection) {
    const auto *visual = connection.visual(connection.screen().root_visual);
    return visual != nullptr && visual->_class == XCB_VISUAL_CLASS_TRUE_COLOR;
}

// The names of what is missing, as in "A, B and C"; empty when nothing is.
std::string missing(std::initializer_list<std::pair<std::string_view, bool>> wanted) {
    std::vector<std::string_view> names;
    for (const auto &[name, isThere] : wanted) {
        if (!isThere) {
            names.push_back(name);
        }
    }
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const char *separator = i + 1 == names.size() ? " and " : ", ";
        text += std::string(i == 0 ? "" : separator) + std::string(names[i]);
    }
    return text;
}

} // namespace

std::optional<std::string> missingRequirement(const Connection &connection) {
    const auto &extensions = connection.extensions();
    const auto names = missing({{"XFixes 2", extensions.xfixes}, {"Shape 1.1", extensions.shape}});
    if (!names.empty()) {
        return "[Lumo] the X server lacks " + names +
               ", without which an overlay would take every click: Lumo does not start";
    }
    if (!hasTrueColours(connection)) {
        return "[Lumo] the display has no true colours (its depth is " +
               std::to_string(connection.screen().root_depth) + "): Lumo does not start";
    }
    return std::nullopt;
}

std::vector<std::string> limitations(const Connection &connection) {
    const auto &extensions = connection.extensions();
    const std::vector<std::pair<std::string, std::string_view>> table = {
        {missing({{"Composite 0.4", extensions.composite},
                  {"Damage", extensions.damage},
                  {"Render 0.10", extensions.render}}),
         "the effect is drawn as lines, without grain and blur"},
        {missing({{"RandR 1.5", extensions.randr}}), "all displays count as one"},
        {missing({{"XInput 2.2", extensions.xinput}}),
         "no shake is seen, and the emergency stop is a hot key"},
        {missing({{"XKEYBOARD", extensions.xkb}}), "the emergency stop is a hot key"},
        {missing({{"X-Resource 1.2", extensions.resource}}),
         "windows belong to the processes that they name themselves"},
    };
    std::vector<std::string> lines;
    for (const auto &[names, consequence] : table) {
        if (!names.empty()) {
            lines.push_back("[Lumo] the X server lacks " + names + ": " + std::string(consequence));
        }
    }
    return lines;
}

} // namespace lumo::x11
