// Included once by PixelKernels.cpp, and then by Highway for each further instruction set; hence
// without an include guard.
#include "drawing/PixelKernels.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "drawing/PixelKernelsByTarget.h" // NOLINT(cppcoreguidelines-macro-usage)
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <cstring>

HWY_BEFORE_NAMESPACE();
// NOLINTBEGIN(misc-definitions-in-headers): each instruction set has its own
namespace lumo::drawing::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::ScalableTag<float>;
using Channels = hn::ScalableTag<std::int16_t>;
using Bytes = hn::Rebind<std::uint8_t, Channels>;
using FewChannels = hn::Rebind<std::int16_t, Floats>; // as many as there are floats
using Vector = hn::Vec<Floats>;

constexpr Floats floats;
constexpr Channels channels;
constexpr Bytes bytes;
constexpr FewChannels fewChannels;

// No vector has more bytes; some have fewer.
constexpr std::size_t mostBytes = 256;

HWY_INLINE Vector clampedToUnit(Vector value) {
    return hn::Min(hn::Max(value, hn::Zero(floats)), hn::Set(floats, 1));
}

void convolve(std::span<const float *const> rows, std::span<const float> weights, float scale,
              const float *scales, float *to, std::size_t count) {
    const std::size_t radius = weights.size() - 1;
    const auto factor = hn::Set(floats, scale);
    for (std::size_t i = 0; i < count; i += hn::Lanes(floats)) {
        auto sum = hn::Mul(hn::LoadU(floats, rows[radius] + i), hn::Set(floats, weights[0]));
        for (std::size_t k = 1; k <= radius; ++k) {
            const auto pair = hn::Add(hn::LoadU(floats, rows[radius - k] + i),
                                      hn::LoadU(floats, rows[radius + k] + i));
            sum = hn::MulAdd(pair, hn::Set(floats, weights[k]), sum);
        }
        sum = hn::Mul(sum, factor);
        hn::StoreU(scales == nullptr ? sum : hn::Mul(sum, hn::LoadU(floats, scales + i)), floats,
                   to + i);
    }
}

void mix(const float *a, const float *b, float weight, float *to, std::size_t count) {
    const auto first = hn::Set(floats, weight);
    const auto second = hn::Set(floats, 1 - weight);
    for (std::size_t i = 0; i < count; i += hn::Lanes(floats)) {
        const auto part = hn::Mul(hn::LoadU(floats, b + i), second);
        hn::StoreU(hn::MulAdd(hn::LoadU(floats, a + i), first, part), floats, to + i);
    }
}

void halve(const float *upper, const float *lower, float *to, std::size_t count) {
    const auto quarter = hn::Set(floats, 0.25F);
    for (std::size_t i = 0; i < count; i += hn::Lanes(floats)) {
        Vector a;
        Vector b;
        Vector c;
        Vector d;
        hn::LoadInterleaved2(floats, upper + 2 * i, a, b);
        hn::LoadInterleaved2(floats, lower + 2 * i, c, d);
        hn::StoreU(hn::Mul(hn::Add(hn::Add(a, b), hn::Add(c, d)), quarter), floats, to + i);
    }
}

void doubled(const float *from, float *to, std::size_t count) {
    const auto far = hn::Set(floats, 0.25F);
    const auto near = hn::Set(floats, 0.75F);
    for (std::size_t i = 0; i < count; i += hn::Lanes(floats)) {
        const auto centre = hn::Mul(hn::LoadU(floats, from + i), near);
        hn::StoreInterleaved2(hn::MulAdd(hn::LoadU(floats, from + i - 1), far, centre),
                              hn::MulAdd(hn::LoadU(floats, from + i + 1), far, centre), floats,
                              to + 2 * i);
    }
}

HWY_INLINE hn::Vec<FewChannels> toFewChannels(Vector value) {
    const auto scale = hn::Set(floats, static_cast<float>(channelUnit));
    return hn::DemoteTo(fewChannels, hn::NearestInt(hn::Mul(clampedToUnit(value), scale)));
}

void quadrupled(const float *from, std::int16_t *to, std::size_t count) {
    for (std::size_t i = 0; i < count; i += hn::Lanes(floats)) {
        const auto start = hn::LoadU(floats, from + i);
        const auto step = hn::Sub(hn::LoadU(floats, from + i + 1), start);
        const auto at = [&](float place) HWY_ATTR {
            return toFewChannels(hn::MulAdd(step, hn::Set(floats, place), start));
        };
        hn::StoreInterleaved4(at(0.125F), at(0.375F), at(0.625F), at(0.875F), fewChannels,
                              to + 4 * i);
    }
}

void toChannels(const float *from, std::int16_t *to, std::size_t count) {
    for (std::size_t i = 0; i < count; i += hn::Lanes(floats)) {
        hn::StoreU(toFewChannels(hn::LoadU(floats, from + i)), fewChannels, to + i);
    }
}

void unpack(const std::uint8_t *pixels, const FloatRows &to, std::size_t count) {
    const hn::Rebind<std::uint8_t, Floats> narrow;
    const hn::Rebind<std::int32_t, Floats> wide;
    const auto scale = hn::Set(floats, 1.0F / 255);
    const auto lanes = hn::Lanes(floats);
    std::array<std::uint8_t, mostBytes> last{};
    for (std::size_t i = 0; i < count; i += lanes) {
        const auto *from = pixels + 4 * i;
        if (i + lanes > count) {
            std::memcpy(last.data(), from, 4 * (count - i));
            from = last.data();
        }
        hn::Vec<decltype(narrow)> blue;
        hn::Vec<decltype(narrow)> green;
        hn::Vec<decltype(narrow)> red;
        hn::Vec<decltype(narrow)> rest;
        hn::LoadInterleaved4(narrow, from, blue, green, red, rest);
        const auto value = [&](hn::Vec<decltype(narrow)> byte) HWY_ATTR {
            return hn::Mul(hn::ConvertTo(floats, hn::PromoteTo(wide, byte)), scale);
        };
        hn::StoreU(value(red), floats, to[0] + i);
        hn::StoreU(value(green), floats, to[1] + i);
        hn::StoreU(value(blue), floats, to[2] + i);
    }
}

// The W3C's formula.
HWY_INLINE Vector softLight(Vector backdrop, Vector source) {
    const auto one = hn::Set(floats, 1);
    const auto strength = hn::Sub(hn::Add(source, source), one);
    const auto darker = hn::Mul(backdrop, hn::Sub(one, backdrop));
    const auto steep =
        hn::Mul(hn::MulAdd(hn::MulAdd(hn::Set(floats, 16), backdrop, hn::Set(floats, -12)),
                           backdrop, hn::Set(floats, 4)),
                backdrop);
    const auto lighter =
        hn::Sub(hn::IfThenElse(hn::Le(backdrop, hn::Set(floats, 0.25F)), steep, hn::Sqrt(backdrop)),
                backdrop);
    const auto change = hn::IfThenElse(hn::Le(strength, hn::Zero(floats)), darker, lighter);
    return hn::MulAdd(strength, change, backdrop);
}

template <Blend blend>
void layWith(const ConstFloatRows &upper, const Laying &laying, const FloatRows &onto,
             std::size_t count) {
    const float opacity = laying.opacity + laying.beneath * (1 - laying.opacity);
    const auto keep = hn::Set(floats, laying.beneath * (1 - laying.opacity) / opacity);
    const auto add = hn::Set(floats, laying.opacity / opacity);
    const auto bare = hn::Set(floats, 1 - laying.beneath);
    const auto covered = hn::Set(floats, laying.beneath);
    for (std::size_t i = 0; i < count; i += hn::Lanes(floats)) {
        const auto red = hn::LoadU(floats, upper[0] + i);
        const auto green = hn::LoadU(floats, upper[1] + i);
        const auto blue = hn::LoadU(floats, upper[2] + i);
        for (std::size_t c = 0; c < 3; ++c) {
            const auto &weights = laying.matrix.weights[c];
            auto source = hn::MulAdd(red, hn::Set(floats, weights[0]),
                                     hn::Set(floats, laying.matrix.offsets[c]));
            source = hn::MulAdd(green, hn::Set(floats, weights[1]), source);
            source = clampedToUnit(hn::MulAdd(blue, hn::Set(floats, weights[2]), source));
            const auto backdrop = hn::LoadU(floats, onto[c] + i);
            auto blended = source;
            if constexpr (blend == Blend::softLight) {
                blended = hn::MulAdd(covered, softLight(backdrop, source), hn::Mul(bare, source));
            }
            hn::StoreU(hn::MulAdd(blended, add, hn::Mul(backdrop, keep)), floats, onto[c] + i);
        }
    }
}

void lay(const ConstFloatRows &upper, const Laying &laying, const FloatRows &onto,
         std::size_t count) {
    if (laying.blend == Blend::softLight) {
        layWith<Blend::softLight>(upper, laying, onto, count);
    } else {
        layWith<Blend::normal>(upper, laying, onto, count);
    }
}

template <bool hasGrain, bool hasColor>
void finishWith(const FinalRow &row) {
    const auto lanes = hn::Lanes(channels);
    const auto down = hn::Set(channels, row.down);
    const auto whole = hn::Set(channels, static_cast<std::int16_t>(channelUnit));
    const auto grainAmount = hn::Set(channels, row.grainAmount);
    const auto colorAmount = hn::Set(channels, row.colorAmount);
    const auto opaque = hn::Set(bytes, 255);
    std::array<std::uint8_t, 2 * mostBytes> last{};
    std::array<std::int16_t, mostBytes / 2> dithers{};
    for (std::size_t i = 0; i < dithers.size(); ++i) {
        dithers[i] = row.dither[i % row.dither.size()];
    }
    for (std::size_t i = 0; i < row.count; i += lanes) {
        auto grain = hn::Zero(channels);
        if constexpr (hasGrain) {
            // From -255 to 255 in sixteen bits, times the amount.
            const auto grey = hn::PromoteTo(channels, hn::LoadU(bytes, row.grain + i));
            const auto centred = hn::Sub(hn::Add(grey, grey), hn::Set(channels, 255));
            grain = hn::MulFixedPoint15(hn::ShiftLeft<7>(centred), grainAmount);
        }
        const auto dither = hn::LoadU(channels, dithers.data() + i % row.dither.size());
        const auto channel = [&](std::size_t c) HWY_ATTR {
            const auto upper = hn::LoadU(channels, row.upper[c] + i);
            const auto lower = hn::LoadU(channels, row.lower[c] + i);
            auto value = hn::Add(upper, hn::MulFixedPoint15(hn::Sub(lower, upper), down));
            if constexpr (hasGrain) {
                // Overlay is a parabola's worth of change on either half: what is added is the
                // grain times the distance from black or white, whichever is nearer.
                const auto room = hn::Min(value, hn::Sub(whole, value));
                value = hn::Add(value, hn::MulFixedPoint15(room, grain));
            }
            if constexpr (hasColor) {
                const auto color = hn::Set(channels, row.color[c]);
                value = hn::Add(value, hn::MulFixedPoint15(hn::Sub(color, value), colorAmount));
            }
            return hn::DemoteTo(bytes, hn::ShiftRight<7>(hn::Add(value, dither)));
        };
        auto *to = i + lanes <= row.count ? row.pixels + 4 * i : last.data();
        hn::StoreInterleaved4(channel(2), channel(1), channel(0), opaque, bytes, to);
    }
    if (const auto rest = row.count % lanes; rest != 0) {
        std::memcpy(row.pixels + 4 * (row.count - rest), last.data(), 4 * rest);
    }
}

void finish(const FinalRow &row) {
    if (row.grain != nullptr && row.colorAmount != 0) {
        finishWith<true, true>(row);
    } else if (row.grain != nullptr) {
        finishWith<true, false>(row);
    } else if (row.colorAmount != 0) {
        finishWith<false, true>(row);
    } else {
        finishWith<false, false>(row);
    }
}

} // namespace lumo::drawing::HWY_NAMESPACE
// NOLINTEND(misc-definitions-in-headers)
HWY_AFTER_NAMESPACE();
