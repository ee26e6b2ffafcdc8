#include "reference/Grain.h"

#include <cstddef>
#include <cstdint>

namespace lumo::reference {

std::shared_ptr<const Image> grainImage(int width, int height) {
    auto image = std::make_shared<Image>(Image{width, height, {}});
    image->pixels.reserve(static_cast<std::size_t>(4) * static_cast<std::size_t>(width) *
                          static_cast<std::size_t>(height));
    std::uint64_t state = 0x9E3779B97F4A7C15U;
    for (int pixel = 0; pixel < width * height; ++pixel) {
        state ^= state >> 12;
        state ^= state << 25;
        state ^= state >> 27;
        const int noise = static_cast<int>(state * 0x2545F4914F6CDD1DU >> 56);
        const auto grey = static_cast<std::uint8_t>(128 + (noise - 128) * 2 / 3);
        image->pixels.insert(image->pixels.end(), {grey, grey, grey, 255});
    }
    return image;
}

} // namespace lumo::reference
