#include "overlay/GrainCache.h"

#include "support/Invariant.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace lumo {

namespace {

constexpr std::uint64_t firstState = 0x9E3779B97F4A7C15;
constexpr std::uint64_t multiplier = 0x2545F4914F6CDD1D; // that of the published xorshift64*

// The grey for each value of a random byte: around the middle.
constexpr std::array<std::uint8_t, 256> makeGreys() {
    std::array<std::uint8_t, 256> greys{};
    for (int byte = 0; byte < 256; ++byte) {
        greys[static_cast<std::size_t>(byte)] =
            static_cast<std::uint8_t>(128 + (byte - 128) * 2 / 3);
    }
    return greys;
}

constexpr auto greyOfByte = makeGreys();

int integerInRange(double value) {
    require(std::isfinite(value) && value > std::numeric_limits<int>::min() &&
                value < std::numeric_limits<int>::max(),
            "a grain image's size in pixels is finite and in range");
    return static_cast<int>(value);
}

} // namespace

GrainCacheKey grainCacheKey(Size size, double scale) {
    return {std::max(1, integerInRange(size.width * scale)),
            std::max(1, integerInRange(size.height * scale)),
            integerInRange(std::round(scale * 100))};
}

std::shared_ptr<const Image> makeFineGrainImage(Size size, double scale) {
    const auto key = grainCacheKey(size, scale);
    try {
        auto image = std::make_shared<Image>();
        image->width = key.width;
        image->height = key.height;
        image->format = Image::Format::grey;
        image->pixels.resize(static_cast<std::size_t>(key.width) *
                             static_cast<std::size_t>(key.height));
        auto state = firstState;
        for (auto &grey : image->pixels) {
            state ^= state >> 12;
            state ^= state << 25;
            state ^= state >> 27;
            grey = greyOfByte[(state * multiplier) >> 56];
        }
        return image;
    } catch (const std::bad_alloc &) {
        return nullptr;
    } catch (const std::length_error &) {
        return nullptr;
    }
}

GrainCache &GrainCache::shared() {
    // Never destroyed, since a background thread may still use it while the process exits.
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
    static auto &cache = *new GrainCache;
    return cache;
}

std::shared_ptr<const Image> GrainCache::find(const GrainCacheKey &key) {
    const std::lock_guard lock(mutex_);
    return findLocked(key);
}

std::shared_ptr<const Image> GrainCache::findLocked(const GrainCacheKey &key) {
    const auto found = std::ranges::find(entries_, key, &Entry::key);
    if (found == entries_.end()) {
        return nullptr;
    }
    entries_.splice(entries_.begin(), entries_, found);
    return found->image;
}

void GrainCache::storeLocked(const GrainCacheKey &key, std::shared_ptr<const Image> image) {
    entries_.push_front({key, std::move(image)});
    std::size_t unused = 0;
    for (auto entry = std::next(entries_.begin()); entry != entries_.end();) {
        const bool isUsed = entry->image.use_count() > 1;
        unused += isUsed ? 0 : entry->image->pixels.size();
        entry = !isUsed && unused > budget ? entries_.erase(entry) : std::next(entry);
    }
}

std::shared_ptr<const Image> GrainCache::findOrRender(Size size, double scale) {
    const auto key = grainCacheKey(size, scale);
    std::unique_lock lock(mutex_);
    renderingEnded_.wait(lock, [&] { return !rendering_.contains(key); });
    if (auto image = findLocked(key)) {
        return image;
    }
    rendering_.insert(key);
    lock.unlock();
    auto image = makeFineGrainImage(size, scale);
    lock.lock();
    if (image) {
        storeLocked(key, image);
    }
    rendering_.erase(key);
    renderingEnded_.notify_all();
    return image;
}

GrainCache::Reservation GrainCache::reserve(const GrainCacheKey &key) {
    {
        const std::lock_guard lock(mutex_);
        if (!reserved_.insert(key).second) {
            return nullptr;
        }
    }
    return {this, [key](GrainCache *cache) {
                const std::lock_guard lock(cache->mutex_);
                cache->reserved_.erase(key);
            }};
}

} // namespace lumo
