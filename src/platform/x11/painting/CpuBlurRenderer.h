#pragma once

#include "drawing/MaterialLayers.h"
#include "drawing/MaterialRenderer.h"
#include "platform/x11/painting/BackdropRenderer.h"
#include "platform/x11/painting/LayerGroup.h"
#include "platform/x11/server/ServerResource.h"
#include "platform/x11/server/SharedMemory.h"
#include "support/Lifetime.h"

#include <optional>

namespace lumo::x11 {

// Draws backdrop layers with the processor. The server shrinks the changed part of the scene, which
// is little work for it and little to fetch; what was fetched is filtered and spread here, and put
// back. Both ways go through shared memory where the server is on this machine, else through the
// connection.
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
    void render(const std::vector<drawing::PixelRect> &parts,
                std::function<void(bool succeeded)> done) override;
    void cancel() override;

  private:
    // One step of shrinking: half as large as what it is drawn from.
    struct Step {
        OwnedPixmap pixmap;
        OwnedPicture picture;
        OwnedPicture source; // of what is shrunk, sampled so that four pixels become one
        int width = 0;
        int height = 0;
    };

    // A part of the canvas on its way.
    struct Piece {
        drawing::PixelRect pixels;
        drawing::PixelRect cells;
        std::size_t offset = 0; // of the cells in the memory that receives them
    };

    void makeSteps();
    Step makeStep(xcb_pixmap_t from, xcb_render_pictformat_t format, int width, int height,
                  bool shrinks);
    void makeStaging();
    void shrink(const std::vector<drawing::PixelRect> &parts);
    void fetchShared();
    void fetchPlainly(std::size_t index);
    void draw(const Piece &piece, const std::uint8_t *cells, std::size_t offset);
    void putPlainly(const drawing::PixelRect &part, xcb_pixmap_t to, std::uint8_t depth);
    void finish();
    void layOver();

    DrawingTools tools_;
    Connection &connection_;
    drawing::GrainPlanes &planes_;
    bool isSharing_ = true; // until the server proves that it can't

    RenderTarget target_;
    std::optional<drawing::PlacedLayers> appearance_;
    std::optional<drawing::MaterialRenderer> material_;
    std::vector<Layer> others_;
    drawing::Region maskedOut_;
    std::vector<Step> steps_; // the last one holds the cells
    int stepsFor_ = 0;        // the cell size that they are for

    OwnedGraphicsContext context_;
    OwnedPixmap staging_; // where the canvas has another depth
    OwnedPicture stagingPicture_;
    SharedMemory cells_;
    SharedMemory pixels_; // none without sharing
    std::vector<std::uint8_t> plainPixels_;

    std::vector<std::shared_ptr<const ServerImage>> images_;
    std::vector<Piece> pieces_;
    std::function<void(bool)> done_;
    unsigned round_ = 0; // which render() replies must belong to
    Lifetime lifetime_;
};

} // namespace lumo::x11
