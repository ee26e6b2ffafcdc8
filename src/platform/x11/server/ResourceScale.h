#pragma once

#include <optional>
#include <string_view>

namespace lumo::x11 {

// The number that the text begins with; absent when it is no finite number above zero.
std::optional<double> positiveNumber(std::string_view text);

// The scale that the text of the RESOURCE_MANAGER property asks for: Xft.dpi by 96, in quarter
// steps, at least 1; 1 when it does not say.
//
// Read here rather than by xcb-xrm: that takes time that grows with the square of the number of
// lines (2,000 of them: 0.25 s) and opens the files that an #include names, both on this thread.
double scaleOfResources(std::string_view resources);

} // namespace lumo::x11
