#pragma once

#include "platform/LayerTree.h"

#include <optional>
#include <string_view>

namespace lumo::freedesktop {

// The background colour in the settings of the desktop that runs, where it is one with such
// settings: they may be installed for others as well.
std::optional<Color> desktopBackgroundColor();

// An opaque colour from "#rgb", "#rrggbb", "#rrrgggbbb" or "#rrrrggggbbbb"; nothing for other text.
std::optional<Color> colorFromHexadecimal(std::string_view text);

} // namespace lumo::freedesktop
