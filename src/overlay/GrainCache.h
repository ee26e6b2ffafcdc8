#pragma once

#include "platform/LayerTree.h"
#include "support/Geometry.h"

#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <tuple>

namespace lumo {

// What tells grain images apart.
struct GrainCacheKey {
    int width = 1; // pixels
    int height = 1;
    int scale100 = 100; // pixels per point times 100, rounded to nearest

    bool operator==(const GrainCacheKey &) const = default;
    bool operator<(const GrainCacheKey &other) const {
        return std::tie(width, height, scale100) <
               std::tie(other.width, other.height, other.scale100);
    }
};

// The key for a size in points and a scale in pixels per point. Pixels are truncated, but never
// fewer than one each way. Stops the program on a size or scale that is not finite or out of range.
GrainCacheKey grainCacheKey(Size size, double scale);

// A fine monochrome noise of that many pixels; the same at every call. Null when there is no memory
// for it. Any thread.
std::shared_ptr<const Image> makeFineGrainImage(Size size, double scale);

// The grain images of the process, one for each key. Those that are in use stay, and with them the
// most recently used others that fit in the budget. Any thread.
class GrainCache {
  public:
    // Bytes: three displays of 3,840 x 2,160 pixels.
    static constexpr std::size_t budget = std::size_t{24} << 20U;

    // Held while an image is on its way, see reserve().
    using Reservation = std::shared_ptr<const void>;

    static GrainCache &shared();

    // The image, if it has been rendered and is still kept.
    std::shared_ptr<const Image> find(const GrainCacheKey &key);

    // The image, rendered now unless it is there. Waits for another thread that renders it. Null
    // when it can't be rendered.
    std::shared_ptr<const Image> findOrRender(Size size, double scale);

    // Says that the caller is about to have this image rendered: null when another caller has said
    // so and has not let go of the reservation yet.
    Reservation reserve(const GrainCacheKey &key);

  private:
    struct Entry {
        GrainCacheKey key;
        std::shared_ptr<const Image> image;
    };

    GrainCache() = default;

    std::shared_ptr<const Image> findLocked(const GrainCacheKey &key);
    void storeLocked(const GrainCacheKey &key, std::shared_ptr<const Image> image);

    std::mutex mutex_; // guards all below
    std::condition_variable renderingEnded_;
    std::list<Entry> entries_; // the last used one first
    std::set<GrainCacheKey> rendering_;
    std::set<GrainCacheKey> reserved_;
};

} // namespace lumo
