#pragma once

namespace lumo::drawing {

// Where OpenGL finds the scene beneath one overlay and what it draws to, as the window system gives
// them: two pictures of the same size in pixels. Lives on the thread on which the context is
// current.
class GlSurface {
  public:
    virtual ~GlSurface() = default;

    // Makes the default framebuffer the canvas, its lowest row last in memory. False when it cannot
    // be drawn into.
    virtual bool makeCurrent() = 0;

    // Makes the scene as it is now the contents of the bound texture, until it is released.
    virtual void bindScene() = 0;
    virtual void releaseScene() = 0;

    // True when the rows of the bound scene come from the bottom to the top.
    virtual bool isSceneUpsideDown() const = 0;

    // Waits until all that was drawn is in the canvas. False when something has failed since the
    // last time.
    virtual bool finish() = 0;
};

} // namespace lumo::drawing
