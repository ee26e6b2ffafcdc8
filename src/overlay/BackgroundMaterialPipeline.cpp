#include "overlay/BackgroundMaterialPipeline.h"

#include "overlay/GrainCache.h"
#include "platform/MainLoop.h"
#include "platform/Platform.h"
#include "platform/Screens.h"

#include <utility>

namespace lumo {

namespace {

constexpr double scaleBeforeLayout = 2;

struct Material {
    double blurRadius;
    double brightness;
    double saturation;
    double contrast;
};

std::vector<Filter> filters(const Material &material) {
    using enum Filter::Type;
    return {{gaussianBlur, material.blurRadius},
            {brightness, material.brightness},
            {saturation, material.saturation},
            {contrast, material.contrast}};
}

double clampedToUnit(double value) {
    return value >= 1 ? 1 : value > 0 ? value : 0;
}

} // namespace

BackgroundMaterialPipeline::BackgroundMaterialPipeline(LayerTree &tree,
                                                       const Capabilities &capabilities,
                                                       MainLoop &mainLoop,
                                                       std::function<void()> onGrainArrived)
    : tree_(tree)
    , mainLoop_(mainLoop)
    , onGrainArrived_(std::move(onGrainArrived))
    , baseBackdropLayer_(addBackdropLayer(capabilities))
    , structureBackdropLayer_(addBackdropLayer(capabilities))
    , grainLayer_(addGrainLayer()) {
    if (auto *structure = layer(structureBackdropLayer_)) {
        structure->opacity = 0.13F;
        structure->blendMode = BlendMode::softLight;
    }
}

std::optional<std::size_t>
BackgroundMaterialPipeline::addBackdropLayer(const Capabilities &capabilities) {
    if (!capabilities.liveBackdrop) {
        return std::nullopt;
    }
    Layer backdrop;
    backdrop.kind = Layer::Kind::backdrop;
    backdrop.masksToBounds = true;
    backdrop.backgroundColor = Color::clear();
    backdrop.backdropScale = scaleBeforeLayout;
    tree_.layers.push_back(std::move(backdrop));
    return tree_.layers.size() - 1;
}

std::size_t BackgroundMaterialPipeline::addGrainLayer() {
    Layer grain;
    grain.opacity = 0.19F;
    grain.blendMode = BlendMode::overlay;
    grain.minificationFilter = Sampling::nearest;
    grain.magnificationFilter = Sampling::nearest;
    tree_.layers.push_back(std::move(grain));
    return tree_.layers.size() - 1;
}

Layer *BackgroundMaterialPipeline::layer(std::optional<std::size_t> index) {
    return index ? &tree_.layers[*index] : nullptr;
}

void BackgroundMaterialPipeline::layout(const Rect &rect, double scale) {
    auto &grain = tree_.layers[grainLayer_];
    grain.frame = rect;
    for (auto *backdrop : {layer(baseBackdropLayer_), layer(structureBackdropLayer_)}) {
        if (backdrop != nullptr) {
            backdrop->frame = rect;
            backdrop->backdropScale = scale;
        }
    }
    if (rect.size() == lastGrainSize_ && scale == lastScale_) {
        return;
    }
    lastGrainSize_ = rect.size();
    lastScale_ = scale;
    grain.contentsScale = scale;
    ++grainGenerationToken_; // what is on its way has another size
    if (auto image = GrainCache::shared().find(grainCacheKey(rect.size(), scale))) {
        grain.contents = std::move(image);
    } else {
        requestGrain(rect.size(), scale);
    }
}

void BackgroundMaterialPipeline::requestGrain(Size size, double scale) {
    auto apply =
        lifetime_.guard([this, token = grainGenerationToken_](std::shared_ptr<const Image> image) {
            if (token == grainGenerationToken_) {
                tree_.layers[grainLayer_].contents = std::move(image);
                onGrainArrived_();
            }
        });
    mainLoop_.runInBackground(
        QualityOfService::userInitiated,
        [size, scale, apply, &mainLoop = mainLoop_, existence = std::weak_ptr(existence_)] {
            if (existence.expired()) {
                return;
            }
            mainLoop.post([apply, image = GrainCache::shared().findOrRender(
                                      size, scale)]() mutable { apply(std::move(image)); });
        });
}

void BackgroundMaterialPipeline::update(double intensity) {
    const double t = clampedToUnit(intensity);
    if (t == lastIntensity_) {
        return;
    }
    lastIntensity_ = t;
    auto &grain = tree_.layers[grainLayer_];
    if (!blurEnabled_) {
        setBackdropOpacity(0);
        grain.opacity = static_cast<float>(0.16 + 0.08 * t);
        return;
    }
    if (auto *base = layer(baseBackdropLayer_)) {
        base->filters = filters({.blurRadius = 24 + 10 * t,
                                 .brightness = -0.02 - 0.012 * t,
                                 .saturation = 1.2 + 0.14 * t,
                                 .contrast = 1.015 + 0.03 * t});
    }
    if (auto *structure = layer(structureBackdropLayer_)) {
        structure->filters = filters({.blurRadius = 7 + 5 * t,
                                      .brightness = -0.018,
                                      .saturation = 1.08,
                                      .contrast = 1.2 + 0.08 * t});
        structure->opacity = static_cast<float>(0.095 + 0.045 * t);
    }
    grain.opacity = static_cast<float>(0.235 + 0.105 * t);
}

void BackgroundMaterialPipeline::setBlurEnabled(bool enabled) {
    if (enabled == blurEnabled_) {
        return;
    }
    blurEnabled_ = enabled;
    setBackdropOpacity(enabled ? 1 : 0);
    lastIntensity_ = -1;
}

void BackgroundMaterialPipeline::setBackdropOpacity(float opacity) {
    for (auto *backdrop : {layer(baseBackdropLayer_), layer(structureBackdropLayer_)}) {
        if (backdrop != nullptr) {
            backdrop->opacity = opacity;
        }
    }
}

void BackgroundMaterialPipeline::prewarmGrainCache(const std::vector<Screen> &screens,
                                                   MainLoop &mainLoop) {
    auto &cache = GrainCache::shared();
    for (const auto &screen : screens) {
        const Size size = screen.frame.size();
        const double scale = screen.backingScaleFactor;
        const auto key = grainCacheKey(size, scale);
        if (cache.find(key)) {
            continue;
        }
        if (auto reservation = cache.reserve(key)) {
            mainLoop.runInBackground(QualityOfService::utility,
                                     [size, scale, reservation = std::move(reservation)] {
                                         GrainCache::shared().findOrRender(size, scale);
                                     });
        }
    }
}

} // namespace lumo
