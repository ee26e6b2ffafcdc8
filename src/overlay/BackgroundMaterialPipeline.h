#pragma once

#include "platform/LayerTree.h"
#include "support/Geometry.h"
#include "support/Lifetime.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lumo {

class MainLoop;
struct Capabilities;
struct Screen;

// The frosted material of one overlay: a strongly and a lightly blurred copy of what lies behind
// it, and a fine grain on top. Where the desktop draws no backdrop layers the grain is all there
// is. Main thread only.
class BackgroundMaterialPipeline {
  public:
    // Adds the pipeline's layers on top of the tree, which must outlive the pipeline; only layers
    // above them may be added or removed later. Calls onGrainArrived on the main thread whenever a
    // grain image that was not ready at layout() has been set in the tree.
    BackgroundMaterialPipeline(LayerTree &tree, const Capabilities &capabilities,
                               MainLoop &mainLoop, std::function<void()> onGrainArrived);
    ~BackgroundMaterialPipeline() = default;
    BackgroundMaterialPipeline(const BackgroundMaterialPipeline &) = delete;
    BackgroundMaterialPipeline &operator=(const BackgroundMaterialPipeline &) = delete;

    // Fits the layers to the rectangle, in points in the view, at that many pixels per point. A
    // grain image that is not in the cache is rendered in the background and set when it is done;
    // the layout that was asked for last wins.
    void layout(const Rect &rect, double scale);

    // Applies the material for an intensity, which is clamped to 0 to 1.
    void update(double intensity);

    // Whether the backdrop layers are in use; they are at first.
    void setBlurEnabled(bool enabled);

    // Has the grain images for these screens rendered that neither are in the cache nor on their
    // way there.
    static void prewarmGrainCache(const std::vector<Screen> &screens, MainLoop &mainLoop);

  private:
    struct Token {};

    std::optional<std::size_t> addBackdropLayer(const Capabilities &capabilities);
    std::size_t addGrainLayer();
    Layer *layer(std::optional<std::size_t> index);
    void setBackdropOpacity(float opacity);
    void requestGrain(Size size, double scale);

    LayerTree &tree_;
    MainLoop &mainLoop_;
    std::function<void()> onGrainArrived_;

    // Places in the tree; absent when there is no such layer.
    std::optional<std::size_t> baseBackdropLayer_;
    std::optional<std::size_t> structureBackdropLayer_;
    std::size_t grainLayer_;

    Size lastGrainSize_;
    double lastScale_ = 0;
    double lastIntensity_ = -1; // below 0: nothing is applied yet
    bool blurEnabled_ = true;
    std::int64_t grainGenerationToken_ = 0; // counts the sizes that were laid out

    // Tells background threads whether the pipeline is still there.
    std::shared_ptr<const Token> existence_ = std::make_shared<const Token>();
    Lifetime lifetime_;
};

} // namespace lumo
