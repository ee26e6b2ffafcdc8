#pragma once

#include "drawing/MaterialLayers.h"
#include "platform/x11/painting/BackdropRenderer.h"
#include "platform/x11/painting/GlService.h"
#include "platform/x11/painting/LayerGroup.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>
#include <memory>

namespace lumo {
class MainLoop;
}

namespace lumo::freedesktop {
class LogOnce;
}

namespace lumo::x11 {

// Who is to draw backdrop layers.
enum class RendererChoice {
    automatic, // graphics hardware once it is known to be there, the processor until then
    gl,        // OpenGL in any case, also when the processor does its work
    cpu,       // never OpenGL
};

// What the user says in the environment, under LUMO_RENDERER: "gl", "cpu", or another value or
// nothing for automatic.
RendererChoice rendererChoiceOfUser();

// The methods of drawing backdrop layers, best first.
enum class RenderingMethod { openGl, processor, none };

// Makes renderers by the best method that works. Shared by all overlays. Main thread only.
class BackdropRenderers {
  public:
    // What it is given outlives it. Waits for the server.
    BackdropRenderers(const DrawingTools &tools, MainLoop &mainLoop, freedesktop::LogOnce &log,
                      RendererChoice choice = rendererChoiceOfUser());

    // Whether backdrop layers can be drawn here at all. Never changes.
    bool isPossible() const;

    // One by the best method that works; null when none does.
    std::unique_ptr<BackdropRenderer> make();

    // By which method make() works at present.
    RenderingMethod methodInUse() const { return inUse_; }

    // That method has failed: from now on the next one is used. Says so in one line; nothing when
    // that has been done already. Graphics hardware is tried again after a while.
    void stepDownFrom(RenderingMethod method);

    // Something has changed that may help what has failed: it is tried again soon.
    void reconsider();

    // Calls the observer when there is a better method than make() used before.
    Handle onImprovement(std::function<void()> observer) {
        return improved_.subscribe(std::move(observer));
    }

  private:
    std::unique_ptr<BackdropRenderer> makeByMethodInUse();
    RenderingMethod methodAfter(RenderingMethod method) const;
    void glStarted();
    void tryGlLater();

    DrawingTools tools_;
    MainLoop &mainLoop_;
    freedesktop::LogOnce &log_;
    drawing::GrainPlanes grainPlanes_;
    std::unique_ptr<GlService> gl_; // null when it is not wanted
    RenderingMethod inUse_;
    bool hasLostGl_ = false;
    Signal<> improved_;
    Handle glStarts_;
    Handle nextGlStart_; // while it is to be tried again
};

} // namespace lumo::x11
