#pragma once

#include "drawing/PlacedLayers.h"
#include "drawing/Region.h"
#include "platform/wayland/client/ProtocolPointers.h"
#include "platform/wayland/client/SharedBuffer.h"
#include "platform/wayland/overlay/BackgroundBlur.h"
#include "support/Handle.h"

#include <functional>
#include <memory>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::wayland {

// What surfaces over other programs' windows are made by.
struct SurfaceFactories {
    ProtocolPointer<wl_compositor> compositor;
    ProtocolPointer<wl_shm> memory;
    ProtocolPointer<wp_viewporter> viewporter;
    ProtocolPointer<zwlr_layer_shell_v1> layerShell;
    std::unique_ptr<BackgroundBlur> blur;
};

// A surface that covers one display, panels included, and lets all input through. Main thread only.
class LayerSurface {
  public:
    // What it shows, in its own pixels with the origin at the top left.
    struct Picture {
        std::shared_ptr<const drawing::PlacedLayers> layers; // nothing is seen while null
        drawing::Region cutOut;                              // where nothing is seen either
        drawing::Region blurred = {}; // in points: behind which the compositor is to blur

        bool operator==(const Picture &) const = default;
    };

    // Calls the function after isConfigured(), size() or isClosed() has become different. What is
    // passed by reference outlives the object.
    LayerSurface(const SurfaceFactories &factories, wl_output *output, MainLoop &mainLoop,
                 std::function<void()> changed);
    ~LayerSurface();
    LayerSurface(const LayerSurface &) = delete;
    LayerSurface &operator=(const LayerSurface &) = delete;

    // Its size in points, which the compositor has said; null until then, when nothing can be
    // shown.
    const drawing::PixelRect *size() const { return size_.isEmpty() ? nullptr : &size_; }

    // The compositor has taken it off the screen for good, as when the display has gone.
    bool isClosed() const { return isClosed_; }

    // Shows the picture from the next refresh on. Draws and hands over no more than what differs
    // from the one before, and nothing where nothing does.
    void show(const Picture &picture);

  private:
    // A buffer and what was drawn into it last.
    struct Canvas {
        std::unique_ptr<SharedBuffer> buffer;
        Picture picture;
    };

    void configure(const drawing::PixelRect &size);
    void commitWhenPossible();
    void commit(wl_buffer *buffer, const drawing::Region &damage);
    void handleFrame();
    Canvas *freeCanvas(int width, int height);
    static void draw(Canvas &canvas, const Picture &picture);

    const SurfaceFactories &factories_;
    MainLoop &mainLoop_;
    std::function<void()> changed_;
    ProtocolPointer<wl_surface> surface_;
    ProtocolPointer<wp_viewport> viewport_;
    SurfaceBlur blur_;
    ProtocolPointer<zwlr_layer_surface_v1> layerSurface_;
    ProtocolPointer<wl_callback> frame_; // while a commit has not come to a refresh
    drawing::PixelRect size_;
    drawing::PixelRect committedSize_;
    bool isClosed_ = false;
    Picture wanted_;
    Picture committed_;
    std::vector<Canvas> canvases_;
    SharedBuffer transparent_;
    Handle longestWait_; // for a refresh, while something else is wanted than was committed
    Handle rest_;        // until the compositor alone has the canvases in memory
};

} // namespace lumo::wayland
