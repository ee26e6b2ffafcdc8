#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

// The inner loops of drawing, in the widest instructions that the processor has. They may read and
// write past the end of a row, up to floatSlack values or channelSlack channels, and read as many
// past a row of grain. Nothing else is touched beyond what is said. Any thread.
namespace lumo::drawing {

inline constexpr std::size_t floatSlack = 64;
inline constexpr std::size_t channelSlack = 4 * floatSlack;

// Red, green and blue, each in a row of its own.
using FloatRows = std::array<float *, 3>;
using ConstFloatRows = std::array<const float *, 3>;

// What 1 is as a 16-bit channel: seven bits finer than what is shown.
inline constexpr int channelUnit = 255 * 128;

// to[i] = scale * scales[i] * the sum over k of weights[|k|] * rows[radius + k][i], with the
// weights from the centre outwards and radius one less than there are of them. Without scales those
// are 1.
void convolve(std::span<const float *const> rows, std::span<const float> weights, float scale,
              const float *scales, float *to, std::size_t count);

// to[i] = a[i] * weight + b[i] * (1 - weight)
void mix(const float *a, const float *b, float weight, float *to, std::size_t count);

// Each result is the mean of two neighbours in both rows, which hold twice the count.
void halve(const float *upper, const float *lower, float *to, std::size_t count);

// Twice as many values on the lines between the centres of the given ones, of which there is one
// before the first and one after the last. The count is of the given ones.
void doubled(const float *from, float *to, std::size_t count);

// Four times as many values as 16-bit channels, on the lines between the centres: the first four
// lie between the first centre and the second. The count is of such groups; there is one more given
// value. Values are cut to 0 to 1.
void quadrupled(const float *from, std::int16_t *to, std::size_t count);

// Values as 16-bit channels, cut to 0 to 1.
void toChannels(const float *from, std::int16_t *to, std::size_t count);

// From pixels of four bytes (blue, green, red and one without meaning) to values from 0 to 1.
void unpack(const std::uint8_t *pixels, const FloatRows &to, std::size_t count);

enum class Blend { normal, softLight };

// How a colour becomes another: each channel is the sum of the three, weighted, and an offset.
struct ColorMatrix {
    std::array<std::array<float, 3>, 3> weights{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    std::array<float, 3> offsets{};

    bool operator==(const ColorMatrix &) const = default;
};

// How a row of colours, all equally opaque, is laid over one that has been laid already.
struct Laying {
    ColorMatrix matrix; // for the upper one, whose results are cut to 0 to 1
    Blend blend = Blend::normal;
    float beneath = 0; // opacity of what lies beneath, not premultiplied
    float opacity = 1; // of the upper one
};

// Lays the upper row over the other in place; the result is not premultiplied, and as opaque as
// opacity + beneath * (1 - opacity), which must be above 0.
void lay(const ConstFloatRows &upper, const Laying &laying, const FloatRows &onto,
         std::size_t count);

// One row of the final picture.
struct FinalRow {
    // The rows of channels between which it lies, and how far down, from 0 to 32767.
    std::array<const std::int16_t *, 3> upper{};
    std::array<const std::int16_t *, 3> lower{};
    std::int16_t down = 0;

    // Grey values that are blended as an "overlay"; null for none. The amount is how opaque they
    // are, in 32768ths.
    const std::uint8_t *grain = nullptr;
    std::int16_t grainAmount = 0;

    // A colour over all that, its channels and its opacity in 32768ths; not drawn at 0.
    std::array<std::int16_t, 3> color{};
    std::int16_t colorAmount = 0;

    // What is added before the last seven bits are dropped, by the place modulo 8.
    std::array<std::int16_t, 8> dither{};

    std::uint8_t *pixels = nullptr; // four bytes each: blue, green, red and 255
    std::size_t count = 0;
};

void finish(const FinalRow &row);

} // namespace lumo::drawing
