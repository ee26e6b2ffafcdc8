#include "drawing/MaterialRenderer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumo::drawing {

namespace {

constexpr int coarsestTexel = 3;  // as a power of two, in pixels
constexpr int upsampledTexel = 2; // the same, of the texels that become pixels in one step
constexpr int mostHalvings = 8;
constexpr double cutOff = 3; // in deviations

// A Gaussian stays one on a grid on which its deviation is at least the first of these many texels,
// and is cheap on one on which it is below the second.
constexpr double narrowestDeviation = 1.6;
constexpr double widestDeviation = 5;

// What linear interpolation between texels that are so many pixels apart adds to the variance, at
// that many places in between.
double varianceOfInterpolation(double distance, int places) {
    double sum = 0;
    for (int i = 0; i < places; ++i) {
        const double share = (i + 0.5) / places;
        sum += share * (1 - share);
    }
    return sum / places * distance * distance;
}

// The texel whose centre is the last one not after that pixel's.
int texelBefore(int pixel, int texelShift) {
    return (2 * pixel + 1 - (1 << texelShift)) >> (texelShift + 1);
}

Range texelsAround(int first, int count, int texelShift) {
    const int last = first + count - 1;
    return texelShift == 0
               ? Range{first, last}
               : Range{texelBefore(first, texelShift), texelBefore(last, texelShift) + 1};
}

int toFraction(float value) {
    return std::clamp(static_cast<int>(std::lround(value * 32768)), 0, 32767);
}

// Thresholds from 0 to 63 that are as far apart from their neighbours as can be, after Bayer.
int threshold(int x, int y) {
    int result = 0;
    for (int bit = 0; bit < 3; ++bit) {
        const int a = (x >> bit) & 1;
        const int b = (y >> bit) & 1;
        result = result * 4 + 2 * (a ^ b) + b;
    }
    return result;
}

std::array<std::int16_t, 8> ditherOf(int x, int y) {
    std::array<std::int16_t, 8> result{};
    for (int i = 0; i < 8; ++i) {
        result[static_cast<std::size_t>(i)] =
            static_cast<std::int16_t>(2 * threshold((x + i) % 8, y % 8) + 1);
    }
    return result;
}

// The rows of a grid as channels of pixels, the last two of them kept.
class UpsampledRows {
  public:
    UpsampledRows(const PixelGrid &grid, const Range &texels, int texelShift)
        : grid_(grid)
        , texels_(texels)
        , texelShift_(texelShift) {
        const auto count = static_cast<std::size_t>(texels.count()) << texelShift;
        for (auto &row : rows_) {
            for (auto &channel : row.channels) {
                channel.resize(count + channelSlack);
            }
        }
    }

    std::array<const std::int16_t *, 3> at(int row, std::size_t offset) {
        auto &kept = rows_[static_cast<std::size_t>(row & 1)];
        if (kept.number != row || !kept.isThere) {
            fill(kept, row);
        }
        return {kept.channels[0].data() + offset, kept.channels[1].data() + offset,
                kept.channels[2].data() + offset};
    }

  private:
    struct Row {
        int number = 0;
        bool isThere = false;
        std::array<std::vector<std::int16_t>, 3> channels;
    };

    void fill(Row &kept, int row) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const auto *from = grid_.at(channel, texels_.first, row);
            auto *to = kept.channels[channel].data();
            const auto count = static_cast<std::size_t>(texels_.count());
            if (texelShift_ == 0) {
                toChannels(from, to, count);
            } else {
                quadrupled(from, to, count - 1);
            }
        }
        kept.number = row;
        kept.isThere = true;
    }

    const PixelGrid &grid_;
    Range texels_;
    int texelShift_;
    std::array<Row, 2> rows_;
};

} // namespace

MaterialRenderer::MaterialRenderer(int width, int height, Material material)
    : width_(width)
    , height_(height)
    , material_(std::move(material)) {
    double least = material_.backdrops.front().deviation;
    for (const auto &backdrop : material_.backdrops) {
        least = std::min(least, backdrop.deviation);
        opacity_ = backdrop.opacity + opacity_ * (1 - backdrop.opacity);
    }
    while (texelShift_ < coarsestTexel && least >= narrowestDeviation * (2 << texelShift_)) {
        ++texelShift_;
    }
    columns_ = (width + texelSize() - 1) >> texelShift_;
    rows_ = (height + texelSize() - 1) >> texelShift_;
    for (const auto &backdrop : material_.backdrops) {
        plans_.push_back(planFor(backdrop.deviation, texelShift_));
    }
}

// Taking means and interpolating blur as well; what they do the Gaussian need not.
MaterialRenderer::Plan MaterialRenderer::planFor(double deviation, int texelShift) {
    Plan plan;
    double texel = 1 << texelShift;
    while (plan.halvings < mostHalvings && deviation >= widestDeviation * texel) {
        ++plan.halvings;
        texel *= 2;
    }
    double variance = deviation * deviation - (texel * texel - 1) / 12;
    const int upsampled = texelShift >= upsampledTexel ? 1 << upsampledTexel : 1;
    variance -= varianceOfInterpolation(upsampled, upsampled);
    for (int from = 1 << (texelShift + plan.halvings); from > upsampled; from /= 2) {
        variance -= varianceOfInterpolation(from, 2);
    }
    const double inTexels = std::sqrt(std::max(variance / (texel * texel), 0.0625));
    const int radius = std::max(1, static_cast<int>(std::ceil(cutOff * inTexels)));
    double sum = 0;
    for (int k = 0; k <= radius; ++k) {
        const double weight = std::exp(-0.5 * k * k / (inTexels * inTexels));
        plan.weights.push_back(static_cast<float>(weight));
        sum += k == 0 ? weight : 2 * weight;
    }
    for (auto &weight : plan.weights) {
        weight /= static_cast<float>(sum);
    }
    return plan;
}

Range MaterialRenderer::inputFor(const Plan &plan, Range texels) {
    for (int i = 0; i < plan.halvings; ++i) {
        texels = texels.evened().coarserAround();
    }
    texels = texels.grown(static_cast<int>(plan.weights.size()) - 1);
    for (int i = 0; i < plan.halvings; ++i) {
        texels = texels.finer();
    }
    return texels;
}

int MaterialRenderer::reach() const {
    double widest = 0;
    for (const auto &backdrop : material_.backdrops) {
        widest = std::max(widest, backdrop.deviation);
    }
    return static_cast<int>(std::ceil(cutOff * widest)) + texelSize();
}

MaterialRenderer::Texels MaterialRenderer::shownTexels(const PixelRect &part) const {
    const int upsampled = texelShift_ >= upsampledTexel ? upsampledTexel : 0;
    Texels shown{texelsAround(part.x, part.width, upsampled),
                 texelsAround(part.y, part.height, upsampled)};
    for (int shift = upsampled; shift < texelShift_; ++shift) {
        shown = {shown.columns.evened().coarserAround(), shown.rows.evened().coarserAround()};
    }
    return shown;
}

PixelRect MaterialRenderer::texelsFor(const PixelRect &pixels) const {
    const auto shown = shownTexels(pixels);
    auto columns = shown.columns;
    auto rows = shown.rows;
    for (const auto &plan : plans_) {
        columns = columns.united(inputFor(plan, shown.columns));
        rows = rows.united(inputFor(plan, shown.rows));
    }
    columns = columns.intersection({0, columns_ - 1});
    rows = rows.intersection({0, rows_ - 1});
    return {columns.first, rows.first, columns.count(), rows.count()};
}

PixelGrid MaterialRenderer::load(const Texels &needed, const PixelRect &available,
                                 const std::uint8_t *texels, std::size_t texelStride) const {
    PixelGrid grid(needed.columns, needed.rows);
    for (int y = 0; y < available.height; ++y) {
        unpack(texels + static_cast<std::size_t>(y) * texelStride,
               grid.row(available.x, available.y + y), static_cast<std::size_t>(available.width));
    }
    return grid;
}

std::vector<float> MaterialRenderer::normalisation(const Plan &plan, int pixels,
                                                   const Range &range) const {
    const double texel = 1 << (texelShift_ + plan.halvings);
    const auto inside = [&](int index) {
        return std::clamp(pixels / texel - index, 0.0, 1.0) * (index < 0 ? 0 : 1);
    };
    const int radius = static_cast<int>(plan.weights.size()) - 1;
    std::vector<float> result(static_cast<std::size_t>(range.count()) + floatSlack);
    for (int index = range.first; index <= range.last; ++index) {
        double sum = 0;
        for (int k = -radius; k <= radius; ++k) {
            sum += inside(index + k) * plan.weights[static_cast<std::size_t>(std::abs(k))];
        }
        result[static_cast<std::size_t>(index - range.first)] =
            sum > 0 ? static_cast<float>(1 / sum) : 0.0F;
    }
    return result;
}

// The Gaussian of what the grid has around the texels, which is the kernel's radius to each side.
PixelGrid MaterialRenderer::convolved(const PixelGrid &source, const Plan &plan,
                                      const Texels &at) const {
    const int radius = static_cast<int>(plan.weights.size()) - 1;
    const Range around = at.columns.grown(radius);
    const auto columnScales = normalisation(plan, width_, at.columns);
    const auto rowScales = normalisation(plan, height_, at.rows);
    PixelGrid result(at.columns, at.rows);
    PixelGrid line(around, {0, 0});
    std::vector<const float *> taps(2 * plan.weights.size() - 1);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        for (int row = at.rows.first; row <= at.rows.last; ++row) {
            int above = row - radius;
            std::ranges::generate(taps, [&] { return source.at(channel, around.first, above++); });
            convolve(taps, plan.weights, rowScales[static_cast<std::size_t>(row - at.rows.first)],
                     nullptr, line.at(channel, around.first, 0),
                     static_cast<std::size_t>(around.count()));
            const float *tap = line.at(channel, around.first, 0);
            std::ranges::generate(taps, [&] { return tap++; });
            convolve(taps, plan.weights, 1, columnScales.data(),
                     result.at(channel, at.columns.first, row),
                     static_cast<std::size_t>(at.columns.count()));
        }
    }
    return result;
}

PixelGrid MaterialRenderer::blurred(const PixelGrid &input, const Plan &plan,
                                    const Texels &shown) const {
    // What is needed on each grid, the finest first.
    std::vector<Texels> finer;
    Texels at = shown;
    for (int i = 0; i < plan.halvings; ++i) {
        finer.push_back({at.columns.evened(), at.rows.evened()});
        at = {finer.back().columns.coarserAround(), finer.back().rows.coarserAround()};
    }
    const int radius = static_cast<int>(plan.weights.size()) - 1;
    const Range around = at.columns.grown(radius);
    PixelGrid halved;
    const PixelGrid *source = &input;
    for (int i = 1; i <= plan.halvings; ++i) {
        Texels wanted{around, at.rows.grown(radius)};
        for (int j = i; j < plan.halvings; ++j) {
            wanted = {wanted.columns.finer(), wanted.rows.finer()};
        }
        halved = source->halved(wanted.columns, wanted.rows);
        source = &halved;
    }

    auto result = convolved(*source, plan, at);
    for (; !finer.empty(); finer.pop_back()) {
        result = result.doubled(finer.back().columns, finer.back().rows);
    }
    return result;
}

PixelGrid MaterialRenderer::composed(const PixelGrid &input, const Texels &shown) const {
    PixelGrid result(shown.columns, shown.rows);
    float beneath = 0;
    for (std::size_t i = 0; i < plans_.size(); ++i) {
        const auto &backdrop = material_.backdrops[i];
        const PixelGrid upper = blurred(input, plans_[i], shown);
        const Laying laying{backdrop.matrix, backdrop.blend, beneath, backdrop.opacity};
        for (int row = shown.rows.first; row <= shown.rows.last; ++row) {
            lay(upper.row(shown.columns.first, row), laying, result.row(shown.columns.first, row),
                static_cast<std::size_t>(shown.columns.count()));
        }
        beneath = backdrop.opacity + beneath * (1 - backdrop.opacity);
    }
    return result;
}

void MaterialRenderer::render(const PixelRect &part, const std::uint8_t *texels,
                              std::size_t texelStride, std::uint8_t *pixels,
                              std::size_t pixelStride) const {
    const auto shown = shownTexels(part);
    Texels needed = shown;
    for (const auto &plan : plans_) {
        needed = {needed.columns.united(inputFor(plan, shown.columns)),
                  needed.rows.united(inputFor(plan, shown.rows))};
    }
    auto grid = composed(load(needed, texelsFor(part), texels, texelStride), shown);
    const int upsampled = texelShift_ >= upsampledTexel ? upsampledTexel : 0;
    for (int shift = texelShift_; shift > upsampled; --shift) {
        auto columns = texelsAround(part.x, part.width, upsampled);
        auto rows = texelsAround(part.y, part.height, upsampled);
        for (int finer = upsampled; finer < shift - 1; ++finer) {
            columns = columns.evened().coarserAround();
            rows = rows.evened().coarserAround();
        }
        grid = grid.doubled(columns.evened(), rows.evened());
    }
    upsample(grid, part, pixels, pixelStride);
}

void MaterialRenderer::upsample(const PixelGrid &composed, const PixelRect &part,
                                std::uint8_t *pixels, std::size_t pixelStride) const {
    const int shift = texelShift_ >= upsampledTexel ? upsampledTexel : 0;
    const int size = 1 << shift;
    const Range texels = texelsAround(part.x, part.width, shift);
    const auto offset = static_cast<std::size_t>(part.x - texels.first * size - size / 2);
    UpsampledRows upsampled(composed, texels, shift);
    FinalRow row;
    row.count = static_cast<std::size_t>(part.width);
    // The grain kernel's scale ends at 255 * 128 instead of 32768.
    row.grainAmount =
        static_cast<std::int16_t>(toFraction(material_.grainOpacity * 32768 / channelUnit));
    row.colorAmount = static_cast<std::int16_t>(toFraction(material_.colorOpacity));
    for (std::size_t c = 0; c < 3; ++c) {
        row.color[c] = static_cast<std::int16_t>(std::lround(material_.color[c] * channelUnit));
    }
    for (int y = 0; y < part.height; ++y) {
        const int line = part.y + y;
        const int upper = texelBefore(line, shift);
        const double down = (line + 0.5) / size - 0.5 - upper;
        row.upper = upsampled.at(upper, offset);
        row.lower = down > 0 ? upsampled.at(upper + 1, offset) : row.upper;
        row.down = static_cast<std::int16_t>(std::lround(down * 32767));
        if (material_.grain) {
            row.grain =
                material_.grain->values.data() +
                static_cast<std::size_t>(line) * static_cast<std::size_t>(material_.grain->width) +
                static_cast<std::size_t>(part.x);
        }
        row.dither = ditherOf(part.x, line);
        row.pixels = pixels + static_cast<std::size_t>(y) * pixelStride;
        finish(row);
    }
}

} // namespace lumo::drawing
