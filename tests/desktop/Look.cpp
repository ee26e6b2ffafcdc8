#include "Look.h"

#include <array>
#include <cmath>

namespace lumo::desktop {

Preferences Look::preferences() const {
    Preferences preferences = shownEffect(effectMode, intensity);
    preferences["blurFreeMode"] = blurFreeMode;
    return preferences;
}

std::string Look::describe() const {
    return effectMode + (blurFreeMode ? " without blur" : "") + " at " + std::to_string(intensity);
}

Colour Look::over(Colour beneath, std::uint8_t grain) const {
    const bool blurs = effectMode == "softBlur" && !blurFreeMode;
    const double grainOpacity = blurs ? 0.235 + 0.105 * intensity : 0.16 + 0.08 * intensity;
    const bool tints = effectMode == "tint";
    const double planeOpacity =
        blurs ? 0 : (tints ? 0.1 + 0.3 * intensity : 0.12 + 0.4 * intensity);
    const std::array<double, 3> plane =
        tints ? std::array{0.3, 0.48, 0.9} : std::array{0.0, 0.0, 0.0};
    const auto channel = [&](int value, double planeValue) {
        const double grained = value * (1 - grainOpacity) + grain * grainOpacity;
        return static_cast<std::uint8_t>(
            std::lround(grained * (1 - planeOpacity) + 255 * planeValue * planeOpacity));
    };
    return {channel(beneath.red, plane[0]), channel(beneath.green, plane[1]),
            channel(beneath.blue, plane[2])};
}

GrainPattern::GrainPattern(int width, int height)
    : width_(static_cast<std::size_t>(width)) {
    std::uint64_t state = 0x9E3779B97F4A7C15U;
    greys_.resize(width_ * static_cast<std::size_t>(height));
    for (std::uint8_t &grey : greys_) {
        state ^= state >> 12;
        state ^= state << 25;
        state ^= state >> 27;
        const int noise = static_cast<int>(state * 0x2545F4914F6CDD1DU >> 56);
        grey = static_cast<std::uint8_t>(128 + (noise - 128) * 2 / 3);
    }
}

} // namespace lumo::desktop
