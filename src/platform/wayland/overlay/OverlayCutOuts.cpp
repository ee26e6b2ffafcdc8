#include "platform/wayland/overlay/OverlayCutOuts.h"

#include "platform/wayland/client/WaylandScreens.h"
#include "platform/wayland/windows/DesktopState.h"

#include <algorithm>
#include <cmath>

namespace lumo::wayland {

namespace {

using drawing::CutOutPiece;
using drawing::CutOutWindow;

CutOutWindow::Layer layerOf(const DesktopWindow &window) {
    switch (window.layer) {
    case DesktopWindow::Layer::below:
        return CutOutWindow::Layer::below;
    case DesktopWindow::Layer::above:
    case DesktopWindow::Layer::dock:
        return CutOutWindow::Layer::above;
    case DesktopWindow::Layer::ordinary:
        break;
    }
    return CutOutWindow::Layer::ordinary;
}

// The area without what lies outside of a circle of that radius in each corner, by the centres of
// pixels, as disjoint rectangles.
std::vector<drawing::PixelRect> rounded(const drawing::PixelRect &area, double radius) {
    const int rows = std::min(static_cast<int>(radius), area.height / 2);
    std::vector<drawing::PixelRect> result = {
        {area.x, area.y + rows, area.width, area.height - 2 * rows}};
    for (int row = 0; row < rows; ++row) {
        const double height = radius - row - 0.5;
        const int inset =
            static_cast<int>(std::lround(radius - std::sqrt(radius * radius - height * height)));
        const int width = area.width - 2 * inset;
        result.push_back({area.x + inset, area.y + row, width, 1});
        result.push_back({area.x + inset, area.maxY() - 1 - row, width, 1});
    }
    return result;
}

std::vector<CutOutPiece> withRoundCorners(const std::vector<CutOutPiece> &pieces,
                                          const DesktopState &state, const OwnWindows &own,
                                          double scale) {
    std::vector<CutOutPiece> result;
    for (const auto &piece : pieces) {
        const auto *window = state.find(piece.window);
        const bool isRounded = window != nullptr && window->process == own.process &&
                               window->title == own.roundedTitle;
        for (const auto &rows : rounded(piece.area, isRounded ? own.cornerRadius * scale : 0)) {
            result.push_back({piece.window, rows, piece.isClear});
        }
    }
    return result;
}

bool isDialogOf(const DesktopState &state, const DesktopWindow &window, std::uint32_t reference) {
    auto owner = window.transientFor;
    for (std::size_t steps = 0; owner && steps < state.windows.size(); ++steps) {
        if (*owner == reference) {
            return true;
        }
        const auto *next = state.find(*owner);
        owner = next != nullptr ? next->transientFor : std::nullopt;
    }
    return false;
}

} // namespace

drawing::PointSpace pixelSpaceOf(const Output &output) {
    const auto pixels = [&](int points) {
        return static_cast<int>(std::lround(points * output.scale));
    };
    return drawing::PointSpace({{0, 0, pixels(output.area.width), pixels(output.area.height)}},
                               output.scale);
}

OverlayCutOuts overlayCutOuts(const DesktopState &state, const Output &output,
                              const drawing::PixelRect &usable, const Order &order,
                              bool focusRaises, const OwnWindows &own,
                              const std::vector<std::uint32_t> &clearBefore) {
    const auto space = pixelSpaceOf(output);
    const auto toPixels = [&](const drawing::PixelRect &area) {
        return space.pixelsOfBounds({static_cast<double>(area.x - output.area.x),
                                     static_cast<double>(area.y - output.area.y),
                                     static_cast<double>(area.width),
                                     static_cast<double>(area.height)});
    };
    std::vector<CutOutWindow> windows; // from the topmost
    for (const auto &area : panelAreas(output.area, usable)) {
        windows.push_back({.area = toPixels(area), .layer = CutOutWindow::Layer::above});
    }
    for (const auto &area : state.unmanagedAreas) {
        windows.push_back({.area = toPixels(area), .layer = CutOutWindow::Layer::floating});
    }
    for (std::size_t i = state.windows.size(); i-- > 0;) {
        const auto &window = state.windows[i];
        const bool isShown = window.presence == DesktopWindow::Presence::shown;
        const bool isReference =
            order.kind == Order::Kind::below && window.identifier == order.reference;
        if (isShown || isReference) {
            windows.push_back({.id = window.identifier,
                               .area = isShown ? toPixels(window.frame) : drawing::PixelRect{},
                               .layer = layerOf(window),
                               .isFocused = window.isFocused,
                               .isDialogOfReference = order.kind == Order::Kind::below &&
                                                      isDialogOf(state, window, order.reference),
                               .isOwn = window.process == own.process});
        }
    }
    drawing::CutOutRule rule{.clearBefore = clearBefore,
                             .focusRaises = focusRaises,
                             .coversLayersAbove = order.level > 0};
    if (order.kind == Order::Kind::below) {
        rule.reference = order.reference;
    }
    const auto isClear = drawing::clearWindows(windows, rule);
    const drawing::PixelRect whole = toPixels(output.area);
    OverlayCutOuts result;
    result.region = drawing::cutOuts(
        withRoundCorners(drawing::cutOutPieces(windows, isClear, whole), state, own, output.scale));
    result.region &= whole;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (isClear[i] && windows[i].id != 0) {
            result.clearWindows.push_back(windows[i].id);
        }
    }
    return result;
}

} // namespace lumo::wayland
