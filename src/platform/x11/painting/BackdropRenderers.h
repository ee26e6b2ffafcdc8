#pragma once

#include "drawing/MaterialLayers.h"
#include "platform/x11/painting/BackdropRenderer.h"
#include "platform/x11/painting/GlService.h"
#include "platform/x11/painting/LayerGroup.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

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

// What the user says in the environment, under LUMO_RENDERER: "gl", "cpu", or anything else or
// nothing for automatic.
RendererChoice rendererChoiceOfUser();

// The ways to draw backdrop layers, best first, and which of them is in use. Shared by all
// overlays. Main thread only.
class BackdropRenderers {
  public:
    // A renderer, or null where this way can't be gone at all.
    using Make = std::function<std::unique_ptr<BackdropRenderer>()>;

    // What it is given outlives it. Waits for the server.
    BackdropRenderers(const DrawingTools &tools, MainLoop &mainLoop, freedesktop::LogOnce &log,
                      RendererChoice choice = rendererChoiceOfUser());

    // Whether backdrop layers can be drawn here at all. Never changes.
    bool isPossible() const;

    // One of the best kind that works; null when none does.
    std::unique_ptr<BackdropRenderer> make();

    // Which way make() goes at present.
    std::size_t wayInUse() const { return inUse_; }

    // That way has failed: from now on the next one is gone. Says so in one line; nothing when that
    // has been done already. Graphics hardware is tried again after a while.
    void stepDownFrom(std::size_t way);

    // Something has changed that may help what has failed: it is tried again soon.
    void reconsider();

    // Calls the observer when a better way has come up than make() went before.
    Handle onImprovement(std::function<void()> observer) {
        return improved_.subscribe(std::move(observer));
    }

  private:
    struct Way {
        std::string_view name; // as in the log line
        Make make;
    };

    void glStarted();
    void tryGlLater();

    DrawingTools tools_;
    MainLoop &mainLoop_;
    freedesktop::LogOnce &log_;
    drawing::GrainPlanes grainPlanes_;
    std::unique_ptr<GlService> gl_; // null when it is not wanted
    std::vector<Way> ways_;
    std::size_t inUse_;
    bool hasLostGl_ = false;
    Signal<> improved_;
    Handle glStarts_;
    Handle nextGlStart_; // while it is to be tried again
};

} // namespace lumo::x11
