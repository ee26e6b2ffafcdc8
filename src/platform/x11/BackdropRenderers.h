#pragma once

#include "platform/x11/BackdropRenderer.h"
#include "platform/x11/LayerGroup.h"
#include "platform/x11/MaterialLayers.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::x11 {

class LogOnce;

// The ways to draw backdrop layers, best first, and which of them is in use. Shared by all
// overlays. Main thread only.
class BackdropRenderers {
  public:
    // A renderer, or null where this way can't be gone at all.
    using Make = std::function<std::unique_ptr<BackdropRenderer>()>;

    // What it is given outlives it.
    BackdropRenderers(const DrawingTools &tools, MainLoop &mainLoop, LogOnce &log);

    // Whether backdrop layers can be drawn here at all. Never changes.
    bool isPossible() const;

    // One of the best kind that works; null when none does.
    std::unique_ptr<BackdropRenderer> make();

    // Which way make() goes at present.
    std::size_t wayInUse() const { return inUse_; }

    // That way has failed for good: from now on the next one is gone. Says so in one line; nothing
    // when that has been done already.
    void stepDownFrom(std::size_t way);

  private:
    struct Way {
        std::string_view name; // as in the log line
        Make make;
    };

    DrawingTools tools_;
    LogOnce &log_;
    GrainPlanes grainPlanes_;
    std::vector<Way> ways_;
    std::size_t inUse_ = 0;
};

} // namespace lumo::x11
