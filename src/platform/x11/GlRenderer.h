#pragma once

#include "platform/x11/BackdropRenderer.h"
#include "platform/x11/GlBlur.h"

#include <atomic>
#include <memory>

namespace lumo {
class MainLoop;
}

namespace lumo::x11 {

class Connection;
class GlThread;
class GlWorkshop;

// Has the layers drawn by OpenGL on its thread. Two connections to the server are in play: before
// the thread begins, the server has said that the scene is there; and the thread has waited for the
// hardware and for the server before the main thread is told that the canvas is.
class GlRenderer final : public BackdropRenderer {
  public:
    // The number is another one for each renderer. The arguments outlive the renderer.
    GlRenderer(Connection &connection, MainLoop &mainLoop, GlThread &thread, GlWorkshop &workshop,
               int number);
    ~GlRenderer() override;
    GlRenderer(const GlRenderer &) = delete;
    GlRenderer &operator=(const GlRenderer &) = delete;

    bool needsSceneApart() const override { return true; }
    void prepare(const Appearance &appearance, const RenderTarget &target) override;
    int reach() const override { return reach_; }
    void render(const std::vector<PixelRect> &parts,
                std::function<void(bool succeeded)> done) override;
    void cancel() override;

  private:
    // One render() on its way through the threads.
    struct Job {
        GlFrame frame;
        std::function<void(bool succeeded)> done; // main thread only
        std::atomic<bool> isCancelled = false;
    };

    void send(const std::shared_ptr<Job> &job);

    Connection &connection_;
    MainLoop &mainLoop_;
    GlThread &thread_;
    GlWorkshop &workshop_;
    int number_;
    GlFrame prepared_; // without parts
    int reach_ = 0;
    std::shared_ptr<Job> job_; // the last one
};

} // namespace lumo::x11
