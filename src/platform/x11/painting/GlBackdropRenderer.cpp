#include "platform/x11/painting/GlBackdropRenderer.h"

#include "platform/MainLoop.h"
#include "platform/x11/server/Connection.h"
#include "support/WorkerThreads.h"

#include <algorithm>
#include <utility>

namespace lumo::x11 {

GlBackdropRenderer::GlBackdropRenderer(Connection &connection, MainLoop &mainLoop,
                                       WorkerThreads &thread, GlDisplays &displays, int number)
    : connection_(connection)
    , mainLoop_(mainLoop)
    , thread_(thread)
    , displays_(displays)
    , number_(number) {
}

GlBackdropRenderer::~GlBackdropRenderer() {
    cancel();
    thread_.post([&displays = displays_, number = number_] { displays.forget(number); });
}

void GlBackdropRenderer::prepare(const drawing::PlacedLayers &appearance,
                                 const RenderTarget &target) {
    cancel();
    prepared_ = {
        target.scenePixmap, target.canvasPixmap, {target.width, target.height, nullptr, {}}};
    reach_ = 0;
    if (auto layers = drawing::glLayers(appearance)) {
        for (const auto &layer : layers->layers) {
            if (layer.backdrop && layer.backdrop->deviation > 0) {
                reach_ = std::max(reach_, drawing::blurGrid(layer.backdrop->deviation).reach());
            }
        }
        prepared_.frame.layers = std::make_shared<const drawing::GlLayers>(std::move(*layers));
    }
}

void GlBackdropRenderer::render(const std::vector<drawing::PixelRect> &damage,
                                std::function<void(bool succeeded)> done) {
    cancel();
    if (!prepared_.frame.layers) {
        done(false);
        return;
    }
    job_ = std::make_shared<Job>();
    job_->frame = prepared_;
    job_->frame.frame.damage = drawing::Region(damage);
    job_->done = std::move(done);
    connection_.whenReplied<xcb_get_input_focus_reply_t>(
        xcb_get_input_focus(connection_), [this, job = job_](const auto * /*reply*/) {
            if (!job->isCancelled) {
                send(job);
            }
        });
}

void GlBackdropRenderer::send(const std::shared_ptr<Job> &job) {
    thread_.post([job, number = number_, &displays = displays_, &mainLoop = mainLoop_] {
        const bool succeeded = !job->isCancelled && displays.draw(number, job->frame);
        mainLoop.post([job, succeeded] {
            if (!job->isCancelled) {
                job->done(succeeded);
            }
        });
    });
}

void GlBackdropRenderer::cancel() {
    if (job_) {
        job_->isCancelled = true;
        job_.reset();
    }
}

} // namespace lumo::x11
