#pragma once

#include "platform/LayerTree.h"
#include "support/Value.h"

#include <string_view>
#include <vector>

namespace lumo::macos {

// The names that the platform's layers are given as strings. Setting any other would end the
// program.

// What is set under a key by key-value coding.
struct NativeSetting {
    std::string_view key;
    Value value;

    bool operator==(const NativeSetting &) const = default;
};

// A filter by its type, and its parameters in the order in which they are set.
struct NativeFilter {
    std::string_view type;
    std::vector<NativeSetting> parameters;
};

NativeFilter nativeFilter(const Filter &filter);

// Null for plain source-over.
const char *compositingFilterName(BlendMode mode);

// The settings of a new backdrop layer, in the order in which they are set.
std::vector<NativeSetting> backdropSettings(double scale);

// The one of them that changes.
NativeSetting backdropScaleSetting(double scale);

// The class and its class method by which filters are made, and the class of the layers that show
// what is behind a window.
inline constexpr const char *filterClass = "CAFilter";
inline constexpr const char *filterFactory = "filterWithType:";
inline constexpr const char *backdropLayerClass = "CABackdropLayer";

} // namespace lumo::macos
