#pragma once

#include "drawing/PixelRect.h"

#include <pixman.h>

#include <span>
#include <vector>

namespace lumo::drawing {

// A set of pixels: a value, kept by pixman. Coordinates are those of the rectangles it is made
// from. Any thread, one at a time.
class Region {
  public:
    Region();
    Region(const PixelRect &rectangle); // NOLINT(google-explicit-constructor): one is a region

    // All that lies in at least one of them.
    explicit Region(std::span<const PixelRect> rectangles);

    ~Region();
    Region(const Region &other);
    Region(Region &&other) noexcept;
    Region &operator=(Region other) noexcept;

    bool isEmpty() const;
    bool overlaps(const PixelRect &rectangle) const;

    // Exactly this region as disjoint rectangles, from the top to the bottom and from the left to
    // the right.
    std::vector<PixelRect> rectangles() const;

    // A few disjoint rectangles that contain the region: each is the extents of what touches, and
    // there is only one if there would be more than 16. For work that costs more per rectangle than
    // per pixel.
    std::vector<PixelRect> boxes() const;

    Region &operator|=(const Region &other);
    Region &operator&=(const Region &other);
    Region &operator-=(const Region &other);

    Region translated(int dx, int dy) const;

    // All pixels that lie no further than that from one of the region's, along and across.
    Region grown(int reach) const;

    bool operator==(const Region &other) const;

  private:
    pixman_region32_t region_;
};

inline Region operator|(Region a, const Region &b) {
    return a |= b;
}
inline Region operator&(Region a, const Region &b) {
    return a &= b;
}
inline Region operator-(Region a, const Region &b) {
    return a -= b;
}

// All that lies in an odd number of the rectangles.
Region evenOdd(std::span<const PixelRect> rectangles);

} // namespace lumo::drawing
