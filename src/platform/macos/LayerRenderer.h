#pragma once

#include "platform/LayerTree.h"
#import "platform/macos/LenientCoding.h"
#include "platform/macos/logic/LayerDifference.h"
#include "support/Log.h"

#import <AppKit/AppKit.h>
#import <QuartzCore/QuartzCore.h>

#include <optional>
#include <vector>

namespace lumo::macos {

// Whether layers that show what is behind the window can be made on this system.
bool hasBackdropLayers();

// Shows layer trees in a view: makes each layer once and then sets on it what has changed. Main
// thread only.
class LayerRenderer {
  public:
    // Makes the view layer-backed. The log outlives the object.
    LayerRenderer(NSView *view, const Log &log);

    // In one transaction, without animation.
    void show(const LayerTree &tree);

  private:
    void makeLayers(const LayerTree &tree, const LayerTreeChange &change);

    LenientCoding coding_;
    NSView *view_;
    CAShapeLayer *exclusionMaskLayer_;
    std::vector<CALayer *> layers_; // nil for a backdrop layer that can't be made
    std::optional<LayerTree> shown_;
};

} // namespace lumo::macos
