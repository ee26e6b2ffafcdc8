#include "platform/x11/painting/BackdropRenderers.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/LogOnce.h"
#include "platform/x11/painting/CpuBlurRenderer.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/RenderFormats.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace lumo::x11 {

namespace {

constexpr std::size_t glWay = 0;
constexpr double glRetryInterval = 60; // seconds

std::uint8_t overlayDepth(const DrawingTools &tools) {
    return tools.formats.translucentVisual() != XCB_NONE ? std::uint8_t{32}
                                                         : tools.connection.screen().root_depth;
}

} // namespace

RendererChoice rendererChoiceOfUser() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment while threads run.
    const char *value = std::getenv("LUMO_RENDERER");
    const std::string_view name = value != nullptr ? value : "";
    return name == "gl"    ? RendererChoice::gl
           : name == "cpu" ? RendererChoice::cpu
                           : RendererChoice::automatic;
}

BackdropRenderers::BackdropRenderers(const DrawingTools &tools, MainLoop &mainLoop,
                                     freedesktop::LogOnce &log, RendererChoice choice)
    : tools_(tools)
    , mainLoop_(mainLoop)
    , log_(log)
    , inUse_(choice == RendererChoice::gl ? glWay : glWay + 1) {
    if (choice != RendererChoice::cpu) {
        gl_ = std::make_unique<GlService>(tools.connection, mainLoop, overlayDepth(tools),
                                          choice == RendererChoice::gl);
        glStarts_ = gl_->onStarted([this] { glStarted(); });
    }
    ways_ = {{"OpenGL", [this] { return gl_->make(); }}};
    if (CpuBlurRenderer::isPossible(tools_)) {
        ways_.push_back({"the processor", [this] {
                             return std::make_unique<CpuBlurRenderer>(tools_, grainPlanes_);
                         }});
    }
}

bool BackdropRenderers::isPossible() const {
    const auto &extensions = tools_.connection.extensions();
    return extensions.composite && extensions.damage && extensions.xfixes &&
           tools_.formats.translucent() != XCB_NONE &&
           (ways_.size() > 1 || (gl_ && gl_->state() != GlService::State::refused));
}

std::unique_ptr<BackdropRenderer> BackdropRenderers::make() {
    // Whoever draws until then, it is only loaded now that a backdrop is to be shown.
    if (gl_ && !nextGlStart_) {
        gl_->start();
    }
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
    std::string failed(ways_[inUse_++].name);
    if (way == glWay) {
        failed += gl_->problem().empty() ? "" : " (" + gl_->problem() + ")";
        gl_->stop();
        hasLostGl_ = true;
        tryGlLater();
    }
    log_.print("[Lumo] Live blur by " + failed + " does not work: " +
               (inUse_ < ways_.size() ? "going on with " + std::string(ways_[inUse_].name)
                                      : "there is none from now on"));
}

void BackdropRenderers::reconsider() {
    if (nextGlStart_) {
        nextGlStart_.reset();
        gl_->start();
    }
}

void BackdropRenderers::glStarted() {
    if (gl_->state() == GlService::State::ready && inUse_ > glWay) {
        inUse_ = glWay;
        if (hasLostGl_) {
            log_.print("[Lumo] Live blur by OpenGL works again");
        }
        improved_.emit();
    } else if (gl_->state() == GlService::State::idle) {
        tryGlLater();
    }
}

void BackdropRenderers::tryGlLater() {
    nextGlStart_ = mainLoop_.after(glRetryInterval, [this] { reconsider(); });
}

} // namespace lumo::x11
