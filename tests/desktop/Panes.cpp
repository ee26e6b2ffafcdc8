#include "Panes.h"

#include "reference/Grain.h"

#include <algorithm>
#include <cmath>

namespace lumo::desktop {

Colour Panes::expectedAt(const Pane &pane, std::uint8_t grain) {
    if (pane.isClear) {
        return Colour::parse(pane.colour);
    }
    auto &known = covered_[pane.colour];
    for (int each = static_cast<int>(known.size()); each < 256; ++each) {
        known.push_back(look_.over(Colour::parse(pane.colour), static_cast<std::uint8_t>(each)));
    }
    return known[grain];
}

bool Panes::isCovered(const Pane &pane, Colour colour) {
    expectedAt(pane, 0);
    return std::ranges::any_of(covered_[pane.colour],
                               [&](Colour each) { return distance(colour, each) <= tolerance; });
}

int Panes::trailIn(const Picture &picture, int row, const std::string &colour) {
    int covered = 0;
    int clear = 0;
    for (int x = 0; x < picture.width(); ++x) {
        const auto pixel = picture.at(x, row);
        clear += pixel == Colour::parse(background_) ? 1 : 0;
        covered += isCovered({{}, colour, false}, pixel) ? 1 : 0;
    }
    return std::max(covered, clear);
}

std::string Panes::wrongIn(const Picture &picture, const std::vector<Pane> &panes, double scale) {
    const auto grain = reference::grainImage(picture.width(), picture.height());
    const auto pixels = [&](int points) { return static_cast<int>(std::lround(points * scale)); };
    std::vector<Pane> onGrid = {{picture.area(), background_, false}};
    for (auto pane : panes) {
        const auto &[x, y, width, height] = pane.area;
        pane.area = {pixels(x), pixels(y), pixels(x + width) - pixels(x),
                     pixels(y + height) - pixels(y)};
        onGrid.push_back(pane);
    }
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            auto pane = onGrid.rbegin();
            while (!pane->area.contains(x, y)) {
                ++pane;
            }
            if (pane->colour.empty()) {
                continue;
            }
            const auto index =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width()) +
                static_cast<std::size_t>(x);
            const auto expected = expectedAt(*pane, grain->pixels[index * grain->bytesPerPixel()]);
            const bool isRight =
                pane->isClear || std::floor(scale) == scale
                    ? distance(picture.at(x, y), expected) <= (pane->isClear ? 0 : tolerance)
                    : isCovered(*pane, picture.at(x, y));
            if (!isRight) {
                return std::to_string(x) + "," + std::to_string(y) + " " +
                       picture.at(x, y).describe() + " instead of " + expected.describe();
            }
        }
    }
    return {};
}

} // namespace lumo::desktop
