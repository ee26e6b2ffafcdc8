#include "overlay/GrainCache.h"

#include "support/Invariant.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace lumo {

namespace {

constexpr std::uint64_t firstState = 0x9E3779B97F4A7C15;
constexpr std::uint64_t multiplier = 0x2545F4914F6CDD1D; // that of the published xorshift64*
constexpr std::size_t bytesPerPixel = 4;

using Pixel = std::array<std::uint8_t, bytesPerPixel>;

// The pixel for each value of a random byte: an opaque grey around the middle.
constexpr std::array<Pixel, 256> makePixels() {
    std::array<Pixel, 256> pixels{};
    for (int byte = 0; byte < 256; ++byte) {
        const auto grey = static_cast<std::uint8_t>(128 + (byte - 128) * 2 / 3);
        pixels[static_cast<std::size_t>(byte)] = {grey, grey, grey, 255};
    }
    return pixels;
}

constexpr auto pixelOfByte = makePixels();

std::uint64_t fillRow(Bytes &row, std::uint64_t state) {
    const auto end = row.size();
    for (std::size_t at = 0; at < end; at += bytesPerPixel) {
        state ^= state >> 12;
        state ^= state << 25;
        state ^= state >> 27;
        std::memcpy(&row[at], &pixelOfByte[(state * multiplier) >> 56], bytesPerPixel);
    }
    return state;
}

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
        Bytes row(static_cast<std::size_t>(key.width) * bytesPerPixel);
        // Rows are made in the processor's cache and appended, so that the memory of the image is
        // written once.
        image->pixels.reserve(row.size() * static_cast<std::size_t>(key.height));
        auto state = firstState;
        for (int line = 0; line < key.height; ++line) {
            state = fillRow(row, state);
            image->pixels.insert(image->pixels.end(), row.begin(), row.end());
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

std::shared_ptr<const Image> GrainCache::find(const GrainCacheKey &key) const {
    const std::shared_lock lock(imagesMutex_);
    const auto found = images_.find(key);
    return found == images_.end() ? nullptr : found->second;
}

void GrainCache::store(const GrainCacheKey &key, std::shared_ptr<const Image> image) {
    const std::unique_lock lock(imagesMutex_);
    images_[key] = std::move(image);
}

std::shared_ptr<const Image> GrainCache::findOrRender(Size size, double scale) {
    const auto key = grainCacheKey(size, scale);
    std::unique_lock lock(workMutex_);
    renderingEnded_.wait(lock, [&] { return !rendering_.contains(key); });
    if (auto image = find(key)) {
        return image;
    }
    rendering_.insert(key);
    lock.unlock();
    auto image = makeFineGrainImage(size, scale);
    if (image) {
        store(key, image);
    }
    lock.lock();
    rendering_.erase(key);
    renderingEnded_.notify_all();
    return image;
}

GrainCache::Reservation GrainCache::reserve(const GrainCacheKey &key) {
    {
        const std::lock_guard lock(workMutex_);
        if (!reserved_.insert(key).second) {
            return nullptr;
        }
    }
    return {this, [key](GrainCache *cache) {
                const std::lock_guard lock(cache->workMutex_);
                cache->reserved_.erase(key);
            }};
}

} // namespace lumo
