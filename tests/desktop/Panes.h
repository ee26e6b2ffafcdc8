#pragma once

#include "Look.h"
#include "desktop/Picture.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace lumo::desktop {

// A part of a display and how it has to look: in any way without a colour. Areas are in points of
// the display.
struct Pane {
    Area area;
    std::string colour;
    bool isClear = true;
};

// Holds pictures of a display against what has to be seen there under that look.
class Panes {
  public:
    // The colour is that of the desktop behind all windows, which the overlay covers.
    Panes(Look look, std::string background)
        : look_(std::move(look))
        , background_(std::move(background)) {}

    // Holds all pixels against the panes, from the bottom to the top; empty when nothing is wrong.
    // At a broken scale the grain's own pixels are not the display's, so that any of its greys will
    // do.
    std::string wrongIn(const Picture &picture, const std::vector<Pane> &panes, double scale = 1);

    // By how many pixels the cut-out of a window of that colour trails behind it, where it is alone
    // in a row: covers the window, or leaves the desktop clear.
    int trailIn(const Picture &picture, int row, const std::string &colour);

  private:
    bool isCovered(const Pane &pane, Colour colour);
    Colour expectedAt(const Pane &pane, std::uint8_t grain);

    Look look_;
    std::string background_;
    std::map<std::string, std::vector<Colour>> covered_; // by grain
};

} // namespace lumo::desktop
