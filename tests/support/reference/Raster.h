#pragma once

#include <cstddef>
#include <vector>

namespace lumo::reference {

// Red, green and blue times alpha, and alpha; 0 to 1 except between two filters.
struct Pixel {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
};

inline Pixel operator*(const Pixel &pixel, double factor) {
    return {pixel.red * factor, pixel.green * factor, pixel.blue * factor, pixel.alpha * factor};
}

inline Pixel operator+(const Pixel &a, const Pixel &b) {
    return {a.red + b.red, a.green + b.green, a.blue + b.blue, a.alpha + b.alpha};
}

// Pixels in rows from the top; transparent at first.
class Raster {
  public:
    Raster(int width, int height)
        : width_(width)
        , height_(height)
        , pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

    int width() const { return width_; }
    int height() const { return height_; }

    Pixel *row(int y) {
        return pixels_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
    }
    const Pixel *row(int y) const {
        return pixels_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
    }
    Pixel &at(int x, int y) { return row(y)[x]; }
    const Pixel &at(int x, int y) const { return row(y)[x]; }

  private:
    int width_;
    int height_;
    std::vector<Pixel> pixels_;
};

} // namespace lumo::reference
