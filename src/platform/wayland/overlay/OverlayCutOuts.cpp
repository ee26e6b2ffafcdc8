#include "platform/wayland/overlay/OverlayCutOuts.h"

#include "platform/wayland/client/WaylandScreens.h"
#include "platform/wayland/windows/DesktopState.h"

#include <cmath>

namespace lumo::wayland {

namespace {

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
                              bool focusRaises, std::int32_t ownProcess,
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
                               .isOwn = window.process == ownProcess});
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
    result.region = drawing::cutOuts(drawing::cutOutPieces(windows, isClear, whole));
    result.region &= whole;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (isClear[i] && windows[i].id != 0) {
            result.clearWindows.push_back(windows[i].id);
        }
    }
    return result;
}

} // namespace lumo::wayland
