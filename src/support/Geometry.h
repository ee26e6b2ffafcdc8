#pragma once

#include <string>

namespace lumo {

struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point &) const = default;
};

struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size &) const = default;
};

// A rectangle in points. Which way y points, and where the origin lies, is said where one is
// handed out: window bounds have the origin at the top left and y pointing down, screens and
// overlays have it at the bottom left and y pointing up. Width and height are not negative in
// anything that Lumo makes.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    // The rectangle that stands for "no rectangle", as the result of intersecting disjoint ones.
    static Rect null();

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    double area() const { return width * height; }
    Size size() const { return {width, height}; }

    bool isNull() const;

    // True for the null rectangle and for one without width or height.
    bool isEmpty() const { return isNull() || width <= 0 || height <= 0; }

    // The common part; null when the rectangles do not meet, empty when only their edges touch.
    Rect intersection(const Rect &other) const;

    // Moved inwards by dx on the left and right and by dy on the top and bottom (outwards when
    // negative); null when nothing is left.
    Rect inset(double dx, double dy) const;

    Rect translated(double dx, double dy) const { return {x + dx, y + dy, width, height}; }

    // The smallest rectangle with whole coordinates that contains this one.
    Rect integral() const;

    bool operator==(const Rect &) const = default;
};

// As "{{x, y}, {width, height}}", with as many digits as each number needs.
std::string describe(const Rect &rect);

} // namespace lumo
