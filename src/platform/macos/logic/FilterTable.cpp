#include "platform/macos/logic/FilterTable.h"

namespace lumo::macos {

NativeFilter nativeFilter(const Filter &filter) {
    switch (filter.type) {
    case Filter::Type::gaussianBlur:
        return {"gaussianBlur", {{"inputRadius", filter.amount}, {"inputNormalizeEdges", true}}};
    case Filter::Type::brightness:
        return {"colorBrightness", {{"inputAmount", filter.amount}}};
    case Filter::Type::saturation:
        return {"colorSaturate", {{"inputAmount", filter.amount}}};
    case Filter::Type::contrast:
        break;
    }
    return {"colorContrast", {{"inputAmount", filter.amount}}};
}

const char *compositingFilterName(BlendMode mode) {
    switch (mode) {
    case BlendMode::overlay:
        return "overlayBlendMode";
    case BlendMode::softLight:
        return "softLightBlendMode";
    case BlendMode::normal:
        break;
    }
    return nullptr;
}

std::vector<NativeSetting> backdropSettings(double scale) {
    return {{"windowServerAware", true},
            backdropScaleSetting(scale),
            {"bleedAmount", 0.0},
            {"allowsInPlaceFiltering", false},
            {"disablesOccludedBackdropBlurs", false}};
}

NativeSetting backdropScaleSetting(double scale) {
    return {"scale", scale};
}

} // namespace lumo::macos
