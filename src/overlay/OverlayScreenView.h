#pragma once

#include "overlay/BackgroundMaterialPipeline.h"
#include "platform/LayerTree.h"
#include "platform/Platform.h"
#include "settings/EffectMode.h"
#include "support/Geometry.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace lumo {

class PlatformWindow;

// All that one overlay window shows: the background material, a colour plane over it, and a
// mask that cuts out of both. It decides nothing. What it is told changes its layer tree only;
// display() brings the tree to the window. Main thread only.
class OverlayScreenView {
  public:
    // Only the frame's size counts: the view fills its window. The window and what the platform
    // refers to must outlive the view.
    OverlayScreenView(const Rect &frame, PlatformWindow &window, const Platform &platform);
    OverlayScreenView(const OverlayScreenView &) = delete;
    OverlayScreenView &operator=(const OverlayScreenView &) = delete;

    // Takes on the frame's size; lays out when that, or the scale of the window's screen, differs
    // from the last layout. Costs two comparisons otherwise.
    void setFrame(const Rect &frame);

    // Fits all layers to the view's bounds and displays them.
    void layout();

    // Colours the view for the mode. The intensity is clamped to 0 to 1. Without blur, soft blur
    // looks like dim.
    void applyTintOverlay(EffectMode effectMode, double intensity, bool blurFreeMode);

    // Shows the view only where a point lies in an even number of the rectangles, which are in
    // points with the origin at the view's bottom left, y up. Empty and null rectangles are
    // skipped. No rectangles at all: as removeMask().
    void applyExclusionMask(const std::vector<Rect> &rectangles);

    // Shows the whole view.
    void removeMask();

    void setTintOpacity(float opacity);

    // The view's own opacity, 0 to 1, apart from the window's.
    void setAlphaValue(double alpha);

    // Brings what has changed to the window, as one change.
    void display();

    // Prints the message with the view's screen index; at most one line in 0.2 s, others are
    // dropped.
    void debugLog(std::string_view message);

    // The index of the view's display in the list of screens, -1 when it is not found there. For
    // log lines only.
    int screenIdx() const { return screenIdx_; }
    void setScreenIdx(int index) { screenIdx_ = index; }

    BackgroundMaterialPipeline &materialPipeline() { return materialPipeline_; }
    const LayerTree &layerTree() const { return tree_; }

  private:
    Layer &tintLayer() { return tree_.layers[tintLayer_]; }
    std::size_t addTintLayer();
    double backingScaleFactor() const;

    PlatformWindow &window_;
    Platform platform_;
    LayerTree tree_;
    BackgroundMaterialPipeline materialPipeline_;
    std::size_t tintLayer_; // its place in the tree
    double layoutScale_ = 0;
    int screenIdx_ = 0;
    double lastDebugLogAt_ = 0;
};

} // namespace lumo
