#include "overlay/OverlayScreenView.h"

#include "platform/MainLoop.h"
#include "platform/OverlayWindows.h"
#include "platform/Screens.h"
#include "support/Log.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace lumo {

namespace {

constexpr double shortestLogInterval = 0.2;
constexpr double scaleWithoutScreens = 2;
constexpr Color tintColor{0.3, 0.48, 0.9, 1};

Rect boundsFor(const Rect &frame) {
    return {0, 0, frame.width, frame.height};
}

} // namespace

OverlayScreenView::OverlayScreenView(const Rect &frame, PlatformWindow &window,
                                     const Platform &platform)
    : window_(window)
    , platform_(platform)
    , tree_{.bounds = boundsFor(frame), .layers = {}, .mask = {}}
    , materialPipeline_(tree_, platform.capabilities, platform.mainLoop, [this] { display(); })
    , tintLayer_(addTintLayer()) {
    layout();
}

std::size_t OverlayScreenView::addTintLayer() {
    Layer tint;
    tint.backgroundColor = Color::clear();
    tint.opacity = 0;
    tree_.layers.push_back(tint);
    return tree_.layers.size() - 1;
}

double OverlayScreenView::backingScaleFactor() const {
    if (const auto scale = window_.backingScaleFactor()) {
        return *scale;
    }
    const auto &screens = platform_.screens.screens();
    return screens.empty() ? scaleWithoutScreens : screens.front().backingScaleFactor;
}

void OverlayScreenView::setFrame(const Rect &frame) {
    const Rect bounds = boundsFor(frame);
    if (bounds != tree_.bounds || backingScaleFactor() != layoutScale_) {
        tree_.bounds = bounds;
        layout();
    }
}

void OverlayScreenView::layout() {
    layoutScale_ = backingScaleFactor();
    materialPipeline_.layout(tree_.bounds, layoutScale_);
    tintLayer().frame = tree_.bounds;
    display();
}

void OverlayScreenView::applyTintOverlay(EffectMode effectMode, double intensity,
                                         bool blurFreeMode) {
    const double t = intensity >= 1 ? 1 : intensity > 0 ? intensity : 0;
    auto &tint = tintLayer();
    if (effectMode == EffectMode::tint) {
        tint.backgroundColor = tintColor;
        tint.opacity = static_cast<float>(0.1 + 0.3 * t);
    } else if (effectMode == EffectMode::dim || blurFreeMode) {
        tint.backgroundColor = Color::black();
        tint.opacity = static_cast<float>(0.12 + 0.4 * t);
    } else {
        tint.opacity = 0;
    }
}

void OverlayScreenView::applyExclusionMask(const std::vector<Rect> &rectangles) {
    if (rectangles.empty()) {
        removeMask();
        return;
    }
    if (!tree_.mask) {
        tree_.mask.emplace();
    }
    auto &mask = *tree_.mask;
    mask.frame = tree_.bounds;
    mask.rectangles.assign(1, tree_.bounds);
    std::ranges::copy_if(rectangles, std::back_inserter(mask.rectangles),
                         [](const Rect &rectangle) { return !rectangle.isEmpty(); });
}

void OverlayScreenView::removeMask() {
    tree_.mask.reset();
}

void OverlayScreenView::setTintOpacity(float opacity) {
    tintLayer().opacity = opacity;
}

void OverlayScreenView::setAlphaValue(double alpha) {
    tree_.viewAlpha = alpha;
}

void OverlayScreenView::display() {
    window_.commit(tree_);
}

void OverlayScreenView::debugLog(std::string_view message) {
    const double now = platform_.mainLoop.now();
    if (now - lastDebugLogAt_ < shortestLogInterval) {
        return;
    }
    lastDebugLogAt_ = now;
    platform_.log.printDiagnostic("[Lumo][screen " + std::to_string(screenIdx_) + "] " +
                                  std::string(message));
}

} // namespace lumo
