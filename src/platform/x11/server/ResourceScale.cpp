#include "platform/x11/server/ResourceScale.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>
#include <string>

namespace lumo::x11 {

std::optional<double> positiveNumber(std::string_view text) {
    std::istringstream stream{std::string(text)};
    stream.imbue(std::locale::classic());
    double number = 0;
    if (!(stream >> number) || !std::isfinite(number) || number <= 0) {
        return std::nullopt;
    }
    return number;
}

double scaleOfResources(std::string_view resources) {
    constexpr std::string_view key = "Xft.dpi:";
    double scale = 1;
    while (!resources.empty()) {
        const auto line = resources.substr(0, resources.find('\n'));
        resources.remove_prefix(std::min(resources.size(), line.size() + 1));
        if (line.starts_with(key)) {
            if (const auto dpi = positiveNumber(line.substr(key.size()))) {
                scale = std::max(1.0, std::round(*dpi / 96 * 4) / 4);
            }
        }
    }
    return scale;
}

} // namespace lumo::x11
