#include "Look.h"

#include "reference/Grain.h"
#include "reference/ReferenceRenderer.h"

#include <memory>

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
    Picture one(1, 1);
    one.at(0, 0) = beneath;
    const auto image = std::make_shared<const Image>(Image{1, 1, {grain, grain, grain, 255}});
    return reference::render(one, tree(1, 1, 1, image), 1).at(0, 0);
}

Picture Look::over(const Picture &beneath) const {
    return reference::render(beneath, tree(beneath.width(), beneath.height()), 1);
}

std::uint8_t grainAt(int width, Spot spot) {
    const auto image = reference::grainImage(width, spot.y + 1);
    return image
        ->pixels[static_cast<std::size_t>(4) * static_cast<std::size_t>(spot.y * width + spot.x)];
}

} // namespace lumo::desktop
