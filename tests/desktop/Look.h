#pragma once

#include "desktop/LumoProcess.h"
#include "desktop/Picture.h"

#include <cstdint>
#include <string>
#include <vector>

namespace lumo::desktop {

// What an overlay without a live backdrop does to the pixels beneath it, worked out here from the
// layers' opacities on its own, without the program's code.
struct Look {
    std::string effectMode;
    double intensity = 0; // 0 to 1
    bool blurFreeMode = false;

    Preferences preferences() const;
    std::string describe() const;

    // The pixel as it must be shown where the grain has that grey.
    Colour over(Colour beneath, std::uint8_t grain) const;
};

// The grain of a display of that width in pixels: greys by row, from the display's top left corner.
class GrainPattern {
  public:
    GrainPattern(int width, int height);

    std::uint8_t at(int x, int y) const {
        return greys_[static_cast<std::size_t>(y) * width_ + static_cast<std::size_t>(x)];
    }

  private:
    std::size_t width_;
    std::vector<std::uint8_t> greys_;
};

// Rounding in three steps at 8 bits per channel stays within this.
constexpr int tolerance = 2;

} // namespace lumo::desktop
