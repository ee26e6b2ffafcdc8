#include "drawing/Region.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

namespace lumo::drawing {

namespace {

constexpr std::size_t mostBoxes = 16;

// pixman returns false for nothing but a lack of memory.
void require(pixman_bool_t succeeded) {
    if (succeeded == 0) {
        throw std::bad_alloc();
    }
}

pixman_box32_t toBox(const PixelRect &rectangle) {
    return {rectangle.x, rectangle.y, rectangle.maxX(), rectangle.maxY()};
}

bool touch(const PixelRect &a, const PixelRect &b) {
    return a.x <= b.maxX() && b.x <= a.maxX() && a.y <= b.maxY() && b.y <= a.maxY();
}

} // namespace

Region::Region() {
    pixman_region32_init(&region_);
}

Region::Region(const PixelRect &rectangle)
    : Region(std::span(&rectangle, 1)) {
}

Region::Region(std::span<const PixelRect> rectangles) {
    std::vector<pixman_box32_t> boxes;
    for (const auto &rectangle : rectangles) {
        if (!rectangle.isEmpty()) {
            boxes.push_back(toBox(rectangle));
        }
    }
    require(pixman_region32_init_rects(&region_, boxes.data(), static_cast<int>(boxes.size())));
}

Region::~Region() {
    pixman_region32_fini(&region_);
}

Region::Region(const Region &other)
    : Region() {
    require(pixman_region32_copy(&region_, &other.region_));
}

Region::Region(Region &&other) noexcept
    : Region() {
    std::swap(region_, other.region_);
}

Region &Region::operator=(Region other) noexcept {
    std::swap(region_, other.region_);
    return *this;
}

bool Region::isEmpty() const {
    return pixman_region32_not_empty(&region_) == 0;
}

bool Region::overlaps(const PixelRect &rectangle) const {
    auto box = toBox(rectangle);
    return !rectangle.isEmpty() &&
           pixman_region32_contains_rectangle(&region_, &box) != PIXMAN_REGION_OUT;
}

std::vector<PixelRect> Region::rectangles() const {
    int count = 0;
    const auto *boxes = pixman_region32_rectangles(&region_, &count);
    std::vector<PixelRect> result;
    for (const auto &box : std::span(boxes, static_cast<std::size_t>(count))) {
        result.push_back({box.x1, box.y1, box.x2 - box.x1, box.y2 - box.y1});
    }
    return result;
}

std::vector<PixelRect> Region::boxes() const {
    std::vector<PixelRect> boxes;
    for (auto box : rectangles()) {
        const auto meets = [&](const PixelRect &other) { return touch(box, other); };
        for (auto found = std::ranges::find_if(boxes, meets); found != boxes.end();
             found = std::ranges::find_if(boxes, meets)) {
            box = box.united(*found);
            boxes.erase(found);
        }
        boxes.push_back(box);
    }
    if (boxes.size() > mostBoxes) {
        const auto &extents = *pixman_region32_extents(&region_);
        boxes = {{extents.x1, extents.y1, extents.x2 - extents.x1, extents.y2 - extents.y1}};
    }
    return boxes;
}

Region &Region::operator|=(const Region &other) {
    require(pixman_region32_union(&region_, &region_, &other.region_));
    return *this;
}

Region &Region::operator&=(const Region &other) {
    require(pixman_region32_intersect(&region_, &region_, &other.region_));
    return *this;
}

Region &Region::operator-=(const Region &other) {
    require(pixman_region32_subtract(&region_, &region_, &other.region_));
    return *this;
}

Region Region::translated(int dx, int dy) const {
    Region result(*this);
    pixman_region32_translate(&result.region_, dx, dy);
    return result;
}

Region Region::grown(int reach) const {
    auto result = rectangles();
    for (auto &rectangle : result) {
        rectangle = {rectangle.x - reach, rectangle.y - reach, rectangle.width + 2 * reach,
                     rectangle.height + 2 * reach};
    }
    return Region(result);
}

bool Region::operator==(const Region &other) const {
    return pixman_region32_equal(&region_, &other.region_) != 0;
}

Region evenOdd(std::span<const PixelRect> rectangles) {
    Region result;
    for (const auto &rectangle : rectangles) {
        result = (result - rectangle) | (Region(rectangle) - result);
    }
    return result;
}

} // namespace lumo::drawing
