#include "reference/Blending.h"

#include <cmath>
#include <stdexcept>

namespace lumo::reference {

namespace {

using Mix = double (*)(double backdrop, double source);

double normal(double /*backdrop*/, double source) {
    return source;
}

double multiply(double backdrop, double source) {
    return backdrop * source;
}

double screen(double backdrop, double source) {
    return backdrop + source - backdrop * source;
}

double overlay(double backdrop, double source) {
    return backdrop <= 0.5 ? multiply(2 * backdrop, source) : screen(2 * backdrop - 1, source);
}

double softLight(double backdrop, double source) {
    if (source <= 0.5) {
        return backdrop - (1 - 2 * source) * backdrop * (1 - backdrop);
    }
    const double lighter =
        backdrop <= 0.25 ? ((16 * backdrop - 12) * backdrop + 4) * backdrop : std::sqrt(backdrop);
    return backdrop + (2 * source - 1) * (lighter - backdrop);
}

Mix mixOf(BlendMode mode) {
    switch (mode) {
    case BlendMode::normal:
        return normal;
    case BlendMode::overlay:
        return overlay;
    case BlendMode::softLight:
        return softLight;
    }
    throw std::logic_error("no such blend mode");
}

} // namespace

Pixel blended(const Pixel &backdrop, const Pixel &source, BlendMode mode) {
    const Mix mix = mixOf(mode);
    const auto channel = [&](double below, double above) {
        double result = above * (1 - backdrop.alpha) + below * (1 - source.alpha);
        if (backdrop.alpha > 0 && source.alpha > 0) {
            result +=
                source.alpha * backdrop.alpha * mix(below / backdrop.alpha, above / source.alpha);
        }
        return result;
    };
    return {channel(backdrop.red, source.red), channel(backdrop.green, source.green),
            channel(backdrop.blue, source.blue),
            source.alpha + backdrop.alpha * (1 - source.alpha)};
}

} // namespace lumo::reference
