#include "platform/x11/BackdropRenderers.h"

#include "platform/x11/Connection.h"
#include "platform/x11/CpuBlurRenderer.h"
#include "platform/x11/LogOnce.h"
#include "platform/x11/RenderFormats.h"

#include <string>

namespace lumo::x11 {

BackdropRenderers::BackdropRenderers(const DrawingTools &tools, MainLoop & /*mainLoop*/,
                                     LogOnce &log)
    : tools_(tools)
    , log_(log) {
    if (CpuBlurRenderer::isPossible(tools_)) {
        ways_.push_back({"the processor", [this] {
                             return std::make_unique<CpuBlurRenderer>(tools_, grainPlanes_);
                         }});
    }
}

bool BackdropRenderers::isPossible() const {
    const auto &extensions = tools_.connection.extensions();
    return extensions.composite && extensions.damage && extensions.xfixes &&
           tools_.formats.translucent() != XCB_NONE && !ways_.empty();
}

std::unique_ptr<BackdropRenderer> BackdropRenderers::make() {
    while (isPossible() && inUse_ < ways_.size()) {
        if (auto renderer = ways_[inUse_].make()) {
            return renderer;
        }
        stepDownFrom(inUse_);
    }
    return nullptr;
}

void BackdropRenderers::stepDownFrom(std::size_t way) {
    if (way != inUse_ || inUse_ == ways_.size()) {
        return;
    }
    const std::string failed(ways_[inUse_++].name);
    log_.print("[Lumo] Live blur by " + failed + " does not work here: " +
               (inUse_ < ways_.size() ? "going on with " + std::string(ways_[inUse_].name)
                                      : "there is none from now on"));
}

} // namespace lumo::x11
