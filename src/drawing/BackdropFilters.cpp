#include "drawing/BackdropFilters.h"

#include <cmath>
#include <cstddef>

namespace lumo::drawing {

namespace {

using Matrix = BackdropFilters::Matrix;

// What the second does to the result of the first.
Matrix followed(const Matrix &first, const Matrix &second) {
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t channel = 0; channel < 3; ++channel) {
                result[row][column] += second[row][channel] * first[channel][column];
            }
        }
        result[row][3] += second[row][3];
    }
    return result;
}

Matrix brightness(double amount) {
    return {{{1, 0, 0, amount}, {0, 1, 0, amount}, {0, 0, 1, amount}}};
}

// Away from the luma, or towards it, whose weights are those of ITU-R Recommendation BT.709.
Matrix saturation(double amount) {
    constexpr std::array<double, 3> luma = {0.2126, 0.7152, 0.0722};
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result[row][column] = luma[column] * (1 - amount) + (row == column ? amount : 0);
        }
    }
    return result;
}

Matrix contrast(double amount) {
    const double added = 0.5 - 0.5 * amount;
    return {{{amount, 0, 0, added}, {0, amount, 0, added}, {0, 0, amount, added}}};
}

} // namespace

BackdropFilters backdropFilters(const Layer &layer) {
    BackdropFilters result;
    for (const auto &[type, amount] : layer.filters) {
        switch (type) {
        case Filter::Type::gaussianBlur:
            result.deviation = std::hypot(result.deviation, amount * layer.backdropScale);
            break;
        case Filter::Type::brightness:
            result.matrix = followed(result.matrix, brightness(amount));
            break;
        case Filter::Type::saturation:
            result.matrix = followed(result.matrix, saturation(amount));
            break;
        case Filter::Type::contrast:
            result.matrix = followed(result.matrix, contrast(amount));
            break;
        }
    }
    return result;
}

} // namespace lumo::drawing
