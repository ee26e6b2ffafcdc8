#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace lumo::desktop {

// A rectangle or place in pixels, origin at the top left of the root window, y pointing down.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    int right() const { return x + width; }
    int bottom() const { return y + height; }
    bool contains(int px, int py) const {
        return px >= x && px < right() && py >= y && py < bottom();
    }
    bool operator==(const Area &) const = default;
};

struct Spot {
    int x = 0;
    int y = 0;

    bool operator==(const Spot &) const = default;
};

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    // From "#rrggbb".
    static Colour parse(const std::string &text);
    std::string describe() const;
    bool operator==(const Colour &) const = default;
};

// The largest difference of a channel.
int distance(Colour a, Colour b);

// Pixels as they were on the screen at one moment.
class Picture {
  public:
    Picture() = default;
    Picture(int width, int height)
        : width_(width)
        , height_(height)
        , pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}
    Picture(int width, int height, const std::function<Colour(int x, int y)> &colourAt);

    int width() const { return width_; }
    int height() const { return height_; }
    Area area() const { return {0, 0, width_, height_}; }

    Colour at(int x, int y) const { return pixels_[index(x, y)]; }
    Colour &at(int x, int y) { return pixels_[index(x, y)]; }

    // That part by itself. It lies within the picture.
    Picture part(const Area &area) const;

    // Puts the other picture at that place, where all of it lies within this one.
    void paste(const Picture &other, Spot place);

    // Channel means of the part, not rounded.
    struct Mean {
        double red = 0;
        double green = 0;
        double blue = 0;
    };
    Mean mean(const Area &part) const;

    // Empty when no channel of the part differs by more than that; else the first pixel that does,
    // row by row, and what is expected there.
    std::string differenceFrom(const Picture &expected, const Area &part, int allowed = 0) const;

    // Throws when the file cannot be written.
    void savePng(const std::filesystem::path &file) const;

  private:
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
               static_cast<std::size_t>(x);
    }

    int width_ = 0;
    int height_ = 0;
    std::vector<Colour> pixels_;
};

// How much the part is like that of the other picture: the ratio of the largest possible value to
// the root mean square of the channels' differences, in decibels; infinite when there is none.
double peakSignalToNoiseRatio(const Picture &a, const Picture &b, const Area &part);

} // namespace lumo::desktop
