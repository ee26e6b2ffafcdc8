#include "desktop/Picture.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace lumo::desktop {

Colour Colour::parse(const std::string &text) {
    if (text.size() != 7 || text.front() != '#') {
        throw std::runtime_error("not a colour: " + text);
    }
    const unsigned long value = std::stoul(text.substr(1), nullptr, 16);
    return {static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value)};
}

std::string Colour::describe() const {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "#%02x%02x%02x", red, green, blue);
    return text.data();
}

int distance(Colour a, Colour b) {
    return std::max(
        {std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

Picture::Picture(int width, int height, const std::function<Colour(int x, int y)> &colourAt)
    : Picture(width, height) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            at(x, y) = colourAt(x, y);
        }
    }
}

Picture Picture::part(const Area &area) const {
    return {area.width, area.height, [&](int x, int y) { return at(area.x + x, area.y + y); }};
}

void Picture::paste(const Picture &other, Spot place) {
    for (int y = 0; y < other.height(); ++y) {
        for (int x = 0; x < other.width(); ++x) {
            at(place.x + x, place.y + y) = other.at(x, y);
        }
    }
}

Picture::Mean Picture::mean(const Area &part) const {
    Mean sum;
    for (int y = part.y; y < part.bottom(); ++y) {
        for (int x = part.x; x < part.right(); ++x) {
            const Colour colour = at(x, y);
            sum.red += colour.red;
            sum.green += colour.green;
            sum.blue += colour.blue;
        }
    }
    const double count = static_cast<double>(part.width) * part.height;
    return {sum.red / count, sum.green / count, sum.blue / count};
}

std::string Picture::differenceFrom(const Picture &expected, const Area &part, int allowed) const {
    for (int y = part.y; y < part.bottom(); ++y) {
        for (int x = part.x; x < part.right(); ++x) {
            if (distance(at(x, y), expected.at(x, y)) > allowed) {
                return "at " + std::to_string(x) + "," + std::to_string(y) + " " +
                       at(x, y).describe() + " instead of " + expected.at(x, y).describe() + "; ";
            }
        }
    }
    return {};
}

void Picture::savePng(const std::filesystem::path &file) const {
    static_assert(sizeof(Colour) == 3);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width_);
    image.height = static_cast<png_uint_32>(height_);
    image.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&image, file.c_str(), 0, pixels_.data(), 0, nullptr) == 0) {
        throw std::runtime_error("cannot write " + file.string() + ": " + image.message);
    }
}

double peakSignalToNoiseRatio(const Picture &a, const Picture &b, const Area &part) {
    double squares = 0;
    for (int y = part.y; y < part.bottom(); ++y) {
        for (int x = part.x; x < part.right(); ++x) {
            const Colour one = a.at(x, y);
            const Colour other = b.at(x, y);
            squares += std::pow(one.red - other.red, 2) + std::pow(one.green - other.green, 2) +
                       std::pow(one.blue - other.blue, 2);
        }
    }
    return 10 * std::log10(255.0 * 255 * 3 * part.width * part.height / squares);
}

} // namespace lumo::desktop
