#pragma once

#include "drawing/BlurGrid.h"
#include "drawing/Region.h"
#include "drawing/gl/GlLayers.h"
#include "drawing/gl/GlTools.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace lumo::drawing {

class GlSurface;

// One drawing: a value that threads may hand each other.
struct GlFrame {
    int width = 0; // of the scene and of the canvas, in pixels
    int height = 0;
    std::shared_ptr<const GlLayers> layers;
    Region
        damage; // what is to be drawn of the canvas, the blur's reach included; from its top left
};

// Draws the layers of one overlay over the scene beneath it, and keeps the textures for that.
// Outside the damage both are taken to be as they were in the frame before. Lives on the thread on
// which the context is current.
class GlBlur {
  public:
    // The tools outlive it.
    explicit GlBlur(GlTools &tools);

    // Waits until it is in the canvas. False when that failed.
    bool draw(const GlFrame &frame, GlSurface &surface);

  private:
    // The scene downsampled, with a margin of one texel, or a blur of that. What was not damaged is
    // from before.
    struct Grid {
        int factor = 1; // pixels per texel
        int width = 0;
        int height = 0;
        GlTexture texture;
    };
    struct Blurred {
        BlurGrid blur;
        Grid across; // in one direction
        Grid whole;
    };

    void adopt(const GlFrame &frame);
    void planBlurs();
    Grid makeGrid(int factor) const;
    void downsample(const GlFrame &frame, bool isUpsideDown);
    void blurAll(const Region &damage);
    void blurPass(const BlurGrid &blur, const Grid &from, const Grid &to, float dx, float dy,
                  const Region &damage);
    void compose(const GlFrame &frame, bool isUpsideDown);
    void setLayers();
    void setLayer(const std::string &prefix, const GlLayer &layer);
    void setBackdrop(const std::string &prefix, const BackdropFilters &filters,
                     const Blurred *blurred);

    GlTools &tools_;
    GlFrame adopted_; // without its damage
    GlTexture scene_;
    std::map<int, Grid> downsampled_; // by factor
    std::vector<Blurred> blurred_;    // of the backdrop layers that blur, in their order
};

} // namespace lumo::drawing
