#include "platform/wayland/overlay/WaylandPlatformWindow.h"

#include "platform/MainLoop.h"
#include "platform/wayland/client/WaylandScreens.h"
#include "platform/wayland/windows/WindowSource.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumo::wayland {

WaylandPlatformWindow::WaylandPlatformWindow(const OverlaySurroundings &surroundings,
                                             std::uint32_t number, const Rect &frame)
    : surroundings_(surroundings)
    , number_(number)
    , frame_(frame)
    , changes_{surroundings.source.onChange([this] { requestPush(); }),
               surroundings.screens.onScreenParametersDidChange([this] { requestPush(); }),
               surroundings.factories.blur->onChange([this] { requestPush(); })} {
}

void WaylandPlatformWindow::setFrame(const Rect &frame) {
    if (std::exchange(frame_, frame) != frame) {
        requestPush();
    }
}

void WaylandPlatformWindow::setLevel(int level) {
    level_ = level;
    if (order_.kind == Order::Kind::front) {
        orderFront();
    }
}

void WaylandPlatformWindow::setAlphaValue(double alpha) {
    alpha = std::clamp(alpha, 0.0, 1.0);
    if (std::exchange(alpha_, alpha) != alpha) {
        requestPush();
    }
}

void WaylandPlatformWindow::orderFront() {
    setOrder({Order::Kind::front, 0, level_});
}

void WaylandPlatformWindow::orderBelow(std::uint32_t windowNumber) {
    const auto *window = surroundings_.source.state().find(windowNumber);
    if (window != nullptr && window->presence == DesktopWindow::Presence::shown) {
        setOrder({Order::Kind::below, windowNumber, 0});
    }
}

void WaylandPlatformWindow::orderOut() {
    setOrder({});
}

void WaylandPlatformWindow::setOrder(const Order &order) {
    if (std::exchange(order_, order) != order) {
        requestPush();
    }
}

std::optional<double> WaylandPlatformWindow::backingScaleFactor() const {
    const auto *output = surroundings_.screens.outputOfFrame(frame_);
    return output != nullptr ? std::optional(output->scale) : std::nullopt;
}

void WaylandPlatformWindow::commit(const LayerTree &tree) {
    if (tree != tree_) {
        tree_ = tree;
        requestPush();
    }
}

void WaylandPlatformWindow::requestPush() {
    if (!std::exchange(isPushPosted_, true)) {
        surroundings_.mainLoop.post(lifetime_.guard([this] { push(); }));
    }
}

void WaylandPlatformWindow::push() {
    isPushPosted_ = false;
    const auto *output = surroundings_.screens.outputOfFrame(frame_);
    if (order_.kind == Order::Kind::out || output == nullptr) {
        surface_.reset();
        panels_.reset();
        layers_.reset();
        return;
    }
    prepareSurface(*output);
    auto [region, clear] =
        overlayCutOuts(surroundings_.source.state(), *output, usableAreaOf(*output), order_,
                       surroundings_.source.focusRaises(), surroundings_.own, clearWindows_);
    clearWindows_ = std::move(clear);
    layers_ = layersOn(*output);
    if (layers_) {
        region |= layers_->maskedOut();
    }
    surface_->show({layers_, layers_ ? region : drawing::Region(), blurredOn(*output, region)});
}

void WaylandPlatformWindow::prepareSurface(const Output &output) {
    // One that is closed is left so: its output's own end may not be known yet.
    if (!surface_ || surfaceOutput_ != output.global) {
        surfaceOutput_ = output.global;
        surface_ =
            std::make_unique<LayerSurface>(surroundings_.factories, output.object,
                                           surroundings_.mainLoop, [this] { requestPush(); });
        panels_.reset();
        if (surroundings_.source.state().areUsableAreasInGaps) {
            panels_ = std::make_unique<PanelProbe>(surroundings_.factories, output.object,
                                                   [this] { requestPush(); });
        }
    }
}

// The compositor's blur is there or not, whatever the overlay's alpha: it comes and goes halfway.
drawing::Region WaylandPlatformWindow::blurredOn(const Output &output,
                                                 const drawing::Region &cutOut) const {
    constexpr double leastAlpha = 0.5;
    if (!layers_ || layers_->alpha < leastAlpha || !showsBackdrop(layers_->tree) ||
        !surroundings_.factories.blur->isAvailable()) {
        return {};
    }
    drawing::Region blurred = drawing::PixelRect{0, 0, output.area.width, output.area.height};
    const auto inPoints = [&](int pixels) {
        return static_cast<int>(std::lround(pixels / output.scale));
    };
    for (const auto &clear : cutOut.rectangles()) {
        const int x = inPoints(clear.x);
        const int y = inPoints(clear.y);
        blurred -= drawing::PixelRect{x, y, inPoints(clear.maxX()) - x, inPoints(clear.maxY()) - y};
    }
    return blurred;
}

// All of the display until it is known.
drawing::PixelRect WaylandPlatformWindow::usableAreaOf(const Output &output) const {
    const auto &state = surroundings_.source.state();
    const auto known = state.usableAreas.find(output.name);
    if (known == state.usableAreas.end() || (panels_ && panels_->width() == 0)) {
        return output.area;
    }
    return panels_ ? withoutGaps(output.area, known->second, panels_->width(), panels_->height())
                   : known->second;
}

// The same object for as long as it looks the same; null where nothing is to be seen.
std::shared_ptr<const drawing::PlacedLayers> WaylandPlatformWindow::layersOn(const Output &output) {
    const double alpha = alpha_ * std::clamp(tree_.viewAlpha, 0.0, 1.0);
    if (alpha <= 0) {
        return nullptr;
    }
    const auto space = pixelSpaceOf(output);
    const Rect frame = {0, 0, frame_.width, frame_.height};
    drawing::PlacedLayers layers = {space.pixelsOfFrame(frame), frame, space, tree_, alpha};
    return layers_ && *layers_ == layers
               ? layers_
               : std::make_shared<const drawing::PlacedLayers>(std::move(layers));
}

} // namespace lumo::wayland
