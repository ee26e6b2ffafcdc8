#pragma once

#include "drawing/PixelRect.h"

#include <vector>

namespace lumo::drawing {

// A few disjoint rectangles that cover all that was added, and perhaps more: what meets becomes
// one.
class PixelParts {
  public:
    void add(PixelRect rect);
    void add(const PixelParts &others);
    void clear() { rectangles_.clear(); }

    bool meets(const PixelRect &rect) const;
    bool isEmpty() const { return rectangles_.empty(); }
    const std::vector<PixelRect> &rectangles() const { return rectangles_; }

    // Each side moved outwards by so much, and all cut to the limit.
    PixelParts grown(int reach, const PixelRect &limit) const;

  private:
    std::vector<PixelRect> rectangles_;
};

} // namespace lumo::drawing
