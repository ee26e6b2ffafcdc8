#include "platform/macos/logic/FilterTable.h"

#include <algorithm>
#include <array>

namespace lumo::macos {

namespace {

struct Parameter {
    std::string_view type;
    std::string_view key;
};

constexpr std::array parameters{
    Parameter{filterType::gaussianBlur, filterKey::inputRadius},
    Parameter{filterType::gaussianBlur, filterKey::inputNormalizeEdges},
    Parameter{filterType::colorBrightness, filterKey::inputAmount},
    Parameter{filterType::colorSaturate, filterKey::inputAmount},
    Parameter{filterType::colorContrast, filterKey::inputAmount},
};

bool isKnown(std::string_view type) {
    return std::ranges::find(parameters, type, &Parameter::type) != parameters.end();
}

bool isKnown(std::string_view type, std::string_view key) {
    return std::ranges::any_of(parameters, [=](const Parameter &parameter) {
        return parameter.type == type && parameter.key == key;
    });
}

} // namespace

bool isCompositingFilter(std::string_view name) {
    return name == compositingFilter::overlayBlendMode ||
           name == compositingFilter::softLightBlendMode;
}

std::vector<Filter> knownFilters(const std::vector<Filter> &filters) {
    std::vector<Filter> known;
    for (const auto &filter : filters) {
        if (!isKnown(filter.type)) {
            continue;
        }
        known.push_back({filter.type, {}});
        for (const auto &[key, value] : filter.values.entries()) {
            if (isKnown(filter.type, key)) {
                known.back().values.set(key, value);
            }
        }
    }
    return known;
}

} // namespace lumo::macos
