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

constexpr double glRetryInterval = 60; // seconds

// As in the log line.
std::string nameOf(RenderingMethod method) {
    return method == RenderingMethod::openGl ? "OpenGL" : "the processor";
}

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
    , inUse_(choice == RendererChoice::gl ? RenderingMethod::openGl
                                          : methodAfter(RenderingMethod::openGl)) {
    if (choice != RendererChoice::cpu) {
        gl_ = std::make_unique<GlService>(tools.connection, mainLoop, overlayDepth(tools),
                                          choice == RendererChoice::gl);
        glStarts_ = gl_->onStarted([this] { glStarted(); });
    }
}

bool BackdropRenderers::isPossible() const {
    const auto &extensions = tools_.connection.extensions();
    return extensions.composite && extensions.damage && extensions.xfixes &&
           tools_.formats.translucent() != XCB_NONE &&
           (CpuBlurRenderer::isPossible(tools_) ||
            (gl_ && gl_->state() != GlService::State::refused));
}

std::unique_ptr<BackdropRenderer> BackdropRenderers::make() {
    // OpenGL is only loaded now that a backdrop is to be shown; the processor draws until then.
    if (gl_ && !nextGlStart_) {
        gl_->start();
    }
    while (isPossible() && inUse_ != RenderingMethod::none) {
        if (auto renderer = makeByMethodInUse()) {
            return renderer;
        }
        stepDownFrom(inUse_);
    }
    return nullptr;
}

std::unique_ptr<BackdropRenderer> BackdropRenderers::makeByMethodInUse() {
    if (inUse_ == RenderingMethod::openGl) {
        return gl_->make();
    }
    return std::make_unique<CpuBlurRenderer>(tools_, grainPlanes_);
}

RenderingMethod BackdropRenderers::methodAfter(RenderingMethod method) const {
    return method == RenderingMethod::openGl && CpuBlurRenderer::isPossible(tools_)
               ? RenderingMethod::processor
               : RenderingMethod::none;
}

void BackdropRenderers::stepDownFrom(RenderingMethod method) {
    if (method != inUse_ || method == RenderingMethod::none) {
        return;
    }
    inUse_ = methodAfter(method);
    std::string failed = nameOf(method);
    if (method == RenderingMethod::openGl) {
        failed += gl_->problem().empty() ? "" : " (" + gl_->problem() + ")";
        gl_->stop();
        hasLostGl_ = true;
        tryGlLater();
    }
    log_.print("[Lumo] Live blur by " + failed + " does not work: " +
               (inUse_ == RenderingMethod::none ? "there is none from now on"
                                                : "going on with " + nameOf(inUse_)));
}

void BackdropRenderers::reconsider() {
    if (nextGlStart_) {
        nextGlStart_.reset();
        gl_->start();
    }
}

void BackdropRenderers::glStarted() {
    if (gl_->state() == GlService::State::ready && inUse_ != RenderingMethod::openGl) {
        inUse_ = RenderingMethod::openGl;
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
