#include "drawing/PixelGrid.h"

#include <algorithm>

namespace lumo::drawing {

namespace {

int halfDown(int value) {
    return value >> 1;
}

constexpr std::size_t channelCount = 3;
constexpr std::size_t before = 1; // values ahead of the first row, which kernels may read

} // namespace

Range Range::united(const Range &other) const {
    return {std::min(first, other.first), std::max(last, other.last)};
}

Range Range::intersection(const Range &other) const {
    return {std::max(first, other.first), std::min(last, other.last)};
}

PixelGrid::PixelGrid(const Range &columns, const Range &rows)
    : columns_(columns)
    , rows_(rows)
    , stride_(static_cast<std::size_t>(columns.count()) + floatSlack)
    , values_(before + channelCount * stride_ * static_cast<std::size_t>(rows.count()) +
              floatSlack) {
}

std::size_t PixelGrid::index(std::size_t channel, int column, int row) const {
    const auto line = channel * static_cast<std::size_t>(rows_.count()) +
                      static_cast<std::size_t>(row - rows_.first);
    return before + line * stride_ + static_cast<std::size_t>(column - columns_.first);
}

PixelGrid PixelGrid::halved(const Range &columns, const Range &rows) const {
    PixelGrid result(columns, rows);
    const auto count = static_cast<std::size_t>(columns.count());
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        for (int row = rows.first; row <= rows.last; ++row) {
            halve(at(channel, 2 * columns.first, 2 * row),
                  at(channel, 2 * columns.first, 2 * row + 1),
                  result.at(channel, columns.first, row), count);
        }
    }
    return result;
}

PixelGrid PixelGrid::doubled(const Range &columns, const Range &rows) const {
    constexpr float near = 0.75F;
    PixelGrid result(columns, rows);
    PixelGrid between(columns_, {0, 0});
    const auto count = static_cast<std::size_t>(columns_.count());
    for (std::size_t channel = 0; channel < channelCount; ++channel) {
        for (int row = rows.first; row <= rows.last; ++row) {
            const int nearest = halfDown(row);
            const int other = row % 2 == 0 ? nearest - 1 : nearest + 1;
            mix(at(channel, columns_.first, nearest), at(channel, columns_.first, other), near,
                between.at(channel, columns_.first, 0), count);
            drawing::doubled(between.at(channel, halfDown(columns.first), 0),
                             result.at(channel, columns.first, row),
                             static_cast<std::size_t>(columns.count()) / 2);
        }
    }
    return result;
}

} // namespace lumo::drawing
