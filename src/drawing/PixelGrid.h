#pragma once

#include "drawing/PixelKernels.h"

#include <cstddef>
#include <vector>

namespace lumo::drawing {

// Whole numbers in a row, both ends included.
struct Range {
    int first = 0;
    int last = -1;

    int count() const { return last - first + 1; }
    Range grown(int by) const { return {first - by, last + by}; }
    Range united(const Range &other) const;
    Range intersection(const Range &other) const;

    // With an even number first and an odd one last, made so outwards.
    Range evened() const { return {first & ~1, last | 1}; }

    // Of texels twice as large: those between whose centres the centres of the range's texels lie.
    Range coarserAround() const { return {(first - 1) >> 1, (last + 1) >> 1}; }

    // Of texels half as large: those within the range's texels.
    Range finer() const { return {2 * first, 2 * last + 1}; }
};

// Colours in the texels of a part of a grid, whose origin may lie elsewhere. Black at first.
class PixelGrid {
  public:
    PixelGrid() = default;
    PixelGrid(const Range &columns, const Range &rows);

    const Range &columns() const { return columns_; }
    const Range &rows() const { return rows_; }

    // Where the row's texel of that column is, for one channel.
    float *at(std::size_t channel, int column, int row) {
        return values_.data() + index(channel, column, row);
    }
    const float *at(std::size_t channel, int column, int row) const {
        return values_.data() + index(channel, column, row);
    }
    FloatRows row(int column, int row) {
        return {at(0, column, row), at(1, column, row), at(2, column, row)};
    }
    ConstFloatRows row(int column, int row) const {
        return {at(0, column, row), at(1, column, row), at(2, column, row)};
    }

    // The means of four texels each. The grid has all that lie in those coarser texels.
    PixelGrid halved(const Range &columns, const Range &rows) const;

    // The values at the centres of finer texels, on the surface through this grid's centres. The
    // grid has all texels that coarserAround() says; both ranges are even ones.
    PixelGrid doubled(const Range &columns, const Range &rows) const;

  private:
    std::size_t index(std::size_t channel, int column, int row) const;

    Range columns_;
    Range rows_;
    std::size_t stride_ = 0;
    std::vector<float> values_;
};

} // namespace lumo::drawing
