#pragma once

#include "platform/LayerTree.h"

#include <string_view>

namespace lumo::x11 {

struct TextColors {
    Color text;
    Color background; // opaque, as the border is
    Color border;
};

// One line of UTF-8 text on a bordered background, in the desktop's font without serifs. The scale
// is in pixels per point. Without pixels where there is no font. Reads the font, which takes a few
// milliseconds the first time.
Image textPicture(std::string_view text, const TextColors &colors, double scale);

} // namespace lumo::x11
