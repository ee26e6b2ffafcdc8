#include "reference/Filters.h"

#include <algorithm>
#include <cmath>

namespace lumo::reference {

namespace {

// What lies further out weighs less than a millionth in all.
constexpr double reachInDeviations = 5;

// Half of the symmetric weights, from the centre outwards, not normalised.
std::vector<double> gaussianWeights(double deviation) {
    std::vector<double> weights;
    for (int distance = 0; distance <= reachInDeviations * deviation; ++distance) {
        weights.push_back(std::exp(-0.5 * distance * distance / (deviation * deviation)));
    }
    return weights;
}

// The factor for each of that many places in a line that makes up for the weights beyond its ends.
std::vector<double> normalisation(int length, const std::vector<double> &weights,
                                  bool normalizeEdges) {
    double all = weights[0];
    for (std::size_t i = 1; i < weights.size(); ++i) {
        all += 2 * weights[i];
    }
    std::vector<double> factors(static_cast<std::size_t>(length), 1 / all);
    for (int at = 0; normalizeEdges && at < length; ++at) {
        double inside = 0;
        for (int other = 0; other < length; ++other) {
            const auto distance = static_cast<std::size_t>(std::abs(other - at));
            inside += distance < weights.size() ? weights[distance] : 0;
        }
        factors[static_cast<std::size_t>(at)] = 1 / inside;
    }
    return factors;
}

void addWeighted(Pixel *to, const Pixel *from, int count, double weight) {
    for (int i = 0; i < count; ++i) {
        to[i] = to[i] + from[i] * weight;
    }
}

Raster blurredAlongRows(const Raster &raster, const std::vector<double> &weights,
                        bool normalizeEdges) {
    const auto factors = normalisation(raster.width(), weights, normalizeEdges);
    const int reach = std::min(static_cast<int>(weights.size()), raster.width()) - 1;
    Raster result(raster.width(), raster.height());
    for (int y = 0; y < raster.height(); ++y) {
        Pixel *to = result.row(y);
        for (int shift = -reach; shift <= reach; ++shift) {
            const int first = std::max(0, -shift);
            const int count = raster.width() - std::abs(shift);
            addWeighted(to + first, raster.row(y) + first + shift, count,
                        weights[static_cast<std::size_t>(std::abs(shift))]);
        }
        for (int x = 0; x < raster.width(); ++x) {
            to[x] = to[x] * factors[static_cast<std::size_t>(x)];
        }
    }
    return result;
}

Raster blurredAlongColumns(const Raster &raster, const std::vector<double> &weights,
                           bool normalizeEdges) {
    const auto factors = normalisation(raster.height(), weights, normalizeEdges);
    const int reach = std::min(static_cast<int>(weights.size()), raster.height()) - 1;
    Raster result(raster.width(), raster.height());
    for (int y = 0; y < raster.height(); ++y) {
        const int last = std::min(y + reach, raster.height() - 1);
        for (int from = std::max(0, y - reach); from <= last; ++from) {
            addWeighted(result.row(y), raster.row(from), raster.width(),
                        weights[static_cast<std::size_t>(std::abs(from - y))] *
                            factors[static_cast<std::size_t>(y)]);
        }
    }
    return result;
}

Pixel clamped(const Pixel &pixel) {
    const double alpha = std::clamp(pixel.alpha, 0.0, 1.0);
    return {std::clamp(pixel.red, 0.0, alpha), std::clamp(pixel.green, 0.0, alpha),
            std::clamp(pixel.blue, 0.0, alpha), alpha};
}

template <class Change>
void changeAll(Raster &raster, Change change) {
    for (int y = 0; y < raster.height(); ++y) {
        std::transform(raster.row(y), raster.row(y) + raster.width(), raster.row(y), change);
    }
}

} // namespace

Raster gaussianBlur(const Raster &raster, double deviation, bool normalizeEdges) {
    if (deviation <= 0) {
        return raster;
    }
    const auto weights = gaussianWeights(deviation);
    return blurredAlongColumns(blurredAlongRows(raster, weights, normalizeEdges), weights,
                               normalizeEdges);
}

Pixel colorBrightness(const Pixel &pixel, double amount) {
    const double added = amount * pixel.alpha;
    return {pixel.red + added, pixel.green + added, pixel.blue + added, pixel.alpha};
}

Pixel colorSaturate(const Pixel &pixel, double amount) {
    const double luma = 0.2126 * pixel.red + 0.7152 * pixel.green + 0.0722 * pixel.blue;
    return {luma + (pixel.red - luma) * amount, luma + (pixel.green - luma) * amount,
            luma + (pixel.blue - luma) * amount, pixel.alpha};
}

Pixel colorContrast(const Pixel &pixel, double amount) {
    const double middle = 0.5 * pixel.alpha;
    return {middle + (pixel.red - middle) * amount, middle + (pixel.green - middle) * amount,
            middle + (pixel.blue - middle) * amount, pixel.alpha};
}

Raster filtered(Raster raster, const std::vector<Filter> &filters, double scale) {
    for (const auto &[type, amount] : filters) {
        const auto apply = [&raster, value = amount](Pixel (*change)(const Pixel &, double)) {
            changeAll(raster, [=](const Pixel &pixel) { return change(pixel, value); });
        };
        switch (type) {
        case Filter::Type::gaussianBlur:
            raster = gaussianBlur(raster, amount * scale, true);
            break;
        case Filter::Type::brightness:
            apply(colorBrightness);
            break;
        case Filter::Type::saturation:
            apply(colorSaturate);
            break;
        case Filter::Type::contrast:
            apply(colorContrast);
            break;
        }
    }
    changeAll(raster, clamped);
    return raster;
}

} // namespace lumo::reference
