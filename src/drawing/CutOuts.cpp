#include "drawing/CutOuts.h"

#include <algorithm>
#include <cstddef>

namespace lumo::drawing {

namespace {

// Of an ordinary window, when the reference is among the windows.
bool staysClear(std::span<const CutOutWindow> windows, std::size_t index, std::size_t reference,
                const CutOutRule &rule) {
    if (rule.focusRaises || index == reference) {
        return index <= reference;
    }
    const auto &window = windows[index];
    return window.isFocused ||
           (index < reference &&
            (window.area.overlaps(windows[reference].area) || window.isDialogOfReference));
}

// How many windows lie above all that are covered when all ordinary ones of other programs are.
std::size_t countInFront(std::span<const CutOutWindow> windows) {
    using enum CutOutWindow::Layer;
    const auto isOthers = [](const CutOutWindow &window) {
        return !window.area.isEmpty() && !window.isOwn &&
               (window.layer == ordinary || window.layer == below);
    };
    return static_cast<std::size_t>(std::ranges::find_if(windows, isOthers) - windows.begin());
}

// Of a floating window.
bool liesInFront(std::span<const CutOutWindow> windows, std::size_t index, std::size_t reference,
                 const CutOutRule &rule) {
    if (reference >= windows.size()) {
        return index < countInFront(windows);
    }
    const auto beneath = windows.subspan(index);
    return index <= reference ||
           (!rule.focusRaises && std::ranges::find(beneath, CutOutWindow::Layer::ordinary,
                                                   &CutOutWindow::layer) != beneath.end());
}

} // namespace

std::vector<bool> clearWindows(std::span<const CutOutWindow> windows, const CutOutRule &rule) {
    std::vector<bool> isClear(windows.size(), false);
    const auto reference = static_cast<std::size_t>(
        std::ranges::find(windows, rule.reference,
                          [](const CutOutWindow &window) { return std::optional(window.id); }) -
        windows.begin());
    for (std::size_t i = 0; i < windows.size(); ++i) {
        using enum CutOutWindow::Layer;
        if (windows[i].layer == floating) {
            isClear[i] = !rule.coversLayersAbove && liesInFront(windows, i, reference, rule);
        } else if (windows[i].layer != ordinary) {
            isClear[i] = windows[i].layer == above && !rule.coversLayersAbove;
        } else if (reference < windows.size()) {
            isClear[i] = staysClear(windows, i, reference, rule);
        } else if (rule.reference) {
            isClear[i] =
                std::ranges::find(rule.clearBefore, windows[i].id) != rule.clearBefore.end();
        } else {
            isClear[i] = windows[i].isOwn && !rule.coversLayersAbove &&
                         (!rule.focusRaises || i < countInFront(windows));
        }
    }
    return isClear;
}

std::vector<CutOutPiece> cutOutPieces(std::span<const CutOutWindow> windows,
                                      const std::vector<bool> &isClear, const PixelRect &overlay) {
    std::vector<CutOutPiece> pieces;
    PixelRect clearBeneath;
    for (std::size_t i = windows.size(); i-- > 0;) {
        const auto &area = windows[i].area;
        if (area.overlaps(overlay) && (isClear[i] || area.overlaps(clearBeneath))) {
            pieces.push_back({windows[i].id, area, isClear[i]});
        }
        if (area.overlaps(overlay) && isClear[i]) {
            clearBeneath = clearBeneath.united(area);
        }
    }
    std::ranges::reverse(pieces);
    return pieces;
}

Region cutOuts(std::span<const CutOutPiece> pieces) {
    Region clear;
    Region covered;
    for (const auto &piece : pieces) {
        if (piece.isClear) {
            clear |= Region(piece.area) - covered;
        } else {
            covered |= piece.area;
        }
    }
    return clear;
}

} // namespace lumo::drawing
