#pragma once

#include "platform/LayerTree.h"

#include <string>
#include <string_view>
#include <vector>

namespace lumo::macos {

// The names that the platform's layers are given as strings.

// True for the blend modes that layers know; others must not be set.
bool isCompositingFilter(std::string_view name);

// The filters that the platform can make, in order, each with only the parameters that it has, in
// order. Setting any other would end the program.
std::vector<Filter> knownFilters(const std::vector<Filter> &filters);

// The class and its class method by which filters are made, and the class of the layers that show
// what is behind a window.
inline constexpr const char *filterClass = "CAFilter";
inline constexpr const char *filterFactory = "filterWithType:";
inline constexpr const char *backdropLayerClass = "CABackdropLayer";

} // namespace lumo::macos
