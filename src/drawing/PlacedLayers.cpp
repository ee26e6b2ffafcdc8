#include "drawing/PlacedLayers.h"

#include <vector>

namespace lumo::drawing {

Region PlacedLayers::maskedOut() const {
    if (!tree.mask) {
        return {};
    }
    std::vector<PixelRect> rectangles;
    for (const auto &rectangle : tree.mask->rectangles) {
        rectangles.push_back(toWindow(rectangle));
    }
    return PixelRect{0, 0, area.width, area.height} - evenOdd(rectangles);
}

} // namespace lumo::drawing
