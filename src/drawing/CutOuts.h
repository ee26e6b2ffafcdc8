#pragma once

#include "drawing/PixelRect.h"
#include "drawing/Region.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// What an overlay that lies above all windows leaves clear of them, for desktops on which an
// overlay can't lie between windows. Plain functions on values, for any thread. Windows are given
// in the stacking order, the topmost first; areas are in pixels of one space, origin at the top
// left.
namespace lumo::drawing {

struct CutOutWindow {
    // Its stacking layer, as far as it matters here.
    enum class Layer {
        below,    // the desktop, and windows that are kept below: never clear
        ordinary, // clear or covered, which the rule says
        above,    // docks and windows that are kept on top: clear with all of their kind
        floating, // menus and others that no manager handles: clear unless they lie at the bottom
    };

    std::uint32_t id = 0;
    PixelRect area = {}; // what a person sees of it; empty when that is nothing
    Layer layer = Layer::ordinary;
    bool isFocused = false;
    bool isDialogOfReference = false;
    bool isOwn = false; // of this program, and no overlay
};

struct CutOutRule {
    // The clear window; absent when all ordinary windows are to be covered, but for this program's
    // own.
    std::optional<std::uint32_t> reference = {};

    // What stays clear of the ordinary windows while the reference is not among the windows.
    std::vector<std::uint32_t> clearBefore = {};

    // A window that gets the focus comes above the other ordinary ones, so all that lies above the
    // reference stays clear. Else the reference counts as the topmost of them, and of those that
    // really lie above it only those stay clear that overlap it or are its dialogs; the focused one
    // does so wherever it lies, and so do this program's own while there is no reference.
    bool focusRaises = true;

    bool coversLayersAbove = false;
};

// Whether each of the windows stays clear.
std::vector<bool> clearWindows(std::span<const CutOutWindow> windows, const CutOutRule &rule);

// A window that has a part in the cut-outs.
struct CutOutPiece {
    std::uint32_t window = 0;
    PixelRect area;
    bool isClear = false; // else it hides parts of clear ones beneath it

    bool operator==(const CutOutPiece &) const = default;
};

// Those that overlap the overlay's area, from the topmost down to the lowest clear one. There is
// one value of isClear for each window.
std::vector<CutOutPiece> cutOutPieces(std::span<const CutOutWindow> windows,
                                      const std::vector<bool> &isClear, const PixelRect &overlay);

// What is to be cut out of an overlay: all where the topmost window stays clear.
Region cutOuts(std::span<const CutOutPiece> pieces);

} // namespace lumo::drawing
