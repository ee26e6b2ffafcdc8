#pragma once

#include "platform/x11/painting/BackdropRenderer.h"
#include "platform/x11/painting/GlDisplays.h"

#include <atomic>
#include <memory>

namespace lumo {
class MainLoop;
class WorkerThreads;
} // namespace lumo

namespace lumo::x11 {

class Connection;

// Has the layers drawn by OpenGL on its thread. Two connections to the server are in play: before
// the thread begins, the server has said that the scene is there; and the thread has waited for the
// hardware and for the server before the main thread is told that the canvas is.
class GlBackdropRenderer final : public BackdropRenderer {
  public:
    // The number is another one for each renderer. The arguments outlive the renderer.
    GlBackdropRenderer(Connection &connection, MainLoop &mainLoop, WorkerThreads &thread,
                       GlDisplays &displays, int number);
    ~GlBackdropRenderer() override;
    GlBackdropRenderer(const GlBackdropRenderer &) = delete;
    GlBackdropRenderer &operator=(const GlBackdropRenderer &) = delete;

    bool needsSceneApart() const override { return true; }
    void prepare(const drawing::PlacedLayers &appearance, const RenderTarget &target) override;
    int reach() const override { return reach_; }
    void render(const std::vector<drawing::PixelRect> &damage,
                std::function<void(bool succeeded)> done) override;
    void cancel() override;

  private:
    // One render() on its way through the threads.
    struct Job {
        GlxFrame frame;
        std::function<void(bool succeeded)> done; // main thread only
        std::atomic<bool> isCancelled = false;
    };

    void send(const std::shared_ptr<Job> &job);

    Connection &connection_;
    MainLoop &mainLoop_;
    WorkerThreads &thread_;
    GlDisplays &displays_;
    int number_;
    GlxFrame prepared_; // without damage
    int reach_ = 0;
    std::shared_ptr<Job> job_; // the last one
};

} // namespace lumo::x11
