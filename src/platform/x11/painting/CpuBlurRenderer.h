#pragma once

#include "drawing/MaterialLayers.h"
#include "drawing/MaterialRenderer.h"
#include "platform/x11/painting/BackdropRenderer.h"
#include "platform/x11/painting/LayerGroup.h"
#include "platform/x11/painting/TileTransfer.h"
#include "platform/x11/server/ServerResource.h"

#include <memory>
#include <optional>
#include <vector>

namespace lumo::x11 {

// Draws backdrop layers with the processor. The server downsamples the changed part of the scene,
// which is little work for it and little to fetch; the texels are blurred and upsampled here, and
// the pixels are put back. Both go through shared memory where the server is on this machine, else
// through the connection.
//
// Plain layers beneath a backdrop layer are not drawn, and backdrop layers fill the view; an
// unblurred edge ("inputNormalizeEdges" false) is not to be had.
class CpuBlurRenderer final : public BackdropRenderer {
  public:
    // Whether the server's pixels can be read here at all.
    static bool isPossible(const DrawingTools &tools);

    // What it is given outlives it.
    CpuBlurRenderer(const DrawingTools &tools, drawing::GrainPlanes &planes);

    bool needsSceneApart() const override { return true; }
    void prepare(const drawing::PlacedLayers &appearance, const RenderTarget &target) override;
    int reach() const override;
    void render(const std::vector<drawing::PixelRect> &damage,
                std::function<void(bool succeeded)> done) override;
    void cancel() override;

  private:
    // One level of downsampling: half as large as what it is drawn from.
    struct Level {
        OwnedPixmap pixmap;
        OwnedPicture picture;
        OwnedPicture source; // of the finer level, sampled so that four pixels become one
    };

    void makeLevels();
    Level makeLevel(xcb_pixmap_t from, xcb_render_pictformat_t format, int width, int height);
    void makeStaging();
    void downsample(const std::vector<drawing::PixelRect> &damage);
    void transfer();
    void transferred(bool succeeded);
    void copyToCanvas(xcb_render_picture_t source, const drawing::PixelRect &part);
    void blendSceneOver();

    DrawingTools tools_;
    Connection &connection_;
    drawing::GrainPlanes &planes_;

    RenderTarget target_;
    std::optional<drawing::PlacedLayers> appearance_;
    std::optional<drawing::MaterialRenderer> material_; // none without backdrop layers
    std::vector<Layer> others_;
    drawing::Region maskedOut_;
    std::vector<Level> levels_; // the last one holds the texels
    int levelsFor_ = 0;         // the texel size that they are for

    OwnedGraphicsContext context_;
    OwnedPixmap staging_; // for the pixels where the canvas has another depth
    OwnedPicture stagingPicture_;

    std::vector<std::shared_ptr<const ServerImage>> images_;
    std::vector<Tile> tiles_;
    std::function<void(bool)> done_;
    std::vector<std::unique_ptr<TileTransfer>> transfers_; // that may work, the best one last
};

} // namespace lumo::x11
