#pragma once

#include "platform/LayerTree.h"

#include <memory>
#include <string>

namespace lumo::reference {

// The look that the settings ask for, by the name of its mode and its intensity.
struct EffectLook {
    std::string effectMode;
    double intensity = 0; // 0 to 1
    bool blurFreeMode = false;
    bool liveBackdrop = false; // whether the desktop draws backdrop layers

    // The layers of a display of that size in pixels with that grain, without cut-outs.
    LayerTree tree(int width, int height, double scale, std::shared_ptr<const Image> grain) const;
    LayerTree tree(int width, int height, double scale = 1) const;
};

// A backdrop layer with such a blur and nothing else, for a display of that many pixels per point.
Layer blurLayer(const Rect &frame, double radius, double scale);

} // namespace lumo::reference
