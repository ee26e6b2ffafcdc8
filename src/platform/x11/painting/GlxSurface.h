#pragma once

#include "drawing/gl/GlSurface.h"
#include "platform/x11/painting/GlxDevice.h"

#include <xcb/xcb.h>

namespace lumo::x11 {

// Two pixmaps of the device's depth, the scene as a texture by texture-from-pixmap. Both exist on
// the server when it is made. Lives on the device's thread, and not longer than the device.
class GlxSurface final : public drawing::GlSurface {
  public:
    GlxSurface(GlxDevice &device, xcb_pixmap_t scene, xcb_pixmap_t canvas);
    ~GlxSurface() override;
    GlxSurface(const GlxSurface &) = delete;
    GlxSurface &operator=(const GlxSurface &) = delete;

    bool makeCurrent() override { return device_.makeCurrent(canvas_); }
    void bindScene() override { device_.bind(scene_); }
    void releaseScene() override { device_.unbind(scene_); }
    bool isSceneUpsideDown() const override { return device_.isSourceUpsideDown(); }
    bool finish() override { return device_.finish(); }

  private:
    GlxDevice &device_;
    GLXPixmap scene_;
    GLXPixmap canvas_;
};

} // namespace lumo::x11
