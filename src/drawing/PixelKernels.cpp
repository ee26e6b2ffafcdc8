#include "drawing/PixelKernels.h"

#include "drawing/PixelKernelsByTarget.h"

namespace lumo::drawing {

HWY_EXPORT(convolve);
HWY_EXPORT(mix);
HWY_EXPORT(halve);
HWY_EXPORT(doubled);
HWY_EXPORT(quadrupled);
HWY_EXPORT(toChannels);
HWY_EXPORT(unpack);
HWY_EXPORT(lay);
HWY_EXPORT(finish);

void convolve(std::span<const float *const> rows, std::span<const float> weights, float scale,
              const float *scales, float *to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(convolve)(rows, weights, scale, scales, to, count);
}

void mix(const float *a, const float *b, float weight, float *to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(mix)(a, b, weight, to, count);
}

void halve(const float *upper, const float *lower, float *to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(halve)(upper, lower, to, count);
}

void doubled(const float *from, float *to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(doubled)(from, to, count);
}

void quadrupled(const float *from, std::int16_t *to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(quadrupled)(from, to, count);
}

void toChannels(const float *from, std::int16_t *to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(toChannels)(from, to, count);
}

void unpack(const std::uint8_t *pixels, const FloatRows &to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(unpack)(pixels, to, count);
}

void lay(const ConstFloatRows &upper, const Laying &laying, const FloatRows &onto,
         std::size_t count) {
    HWY_DYNAMIC_DISPATCH(lay)(upper, laying, onto, count);
}

void finish(const FinalRow &row) {
    HWY_DYNAMIC_DISPATCH(finish)(row);
}

} // namespace lumo::drawing
