#pragma once

#include <epoxy/gl.h>
#include <epoxy/glx.h>

#include <cstdint>
#include <memory>
#include <string>

namespace lumo::x11 {

// An OpenGL context that can draw from and into pixmaps of one depth, on an X connection of its
// own. Nothing that it meets ends the program. Belongs to the thread that makes it; waits for the
// server and for the graphics hardware.
class GlxDevice {
  public:
    // Null, with the reason, where there is no OpenGL 3.3 with GLX 1.3 and texture-from-pixmap.
    static std::unique_ptr<GlxDevice> open(const std::string &displayName, int screenNumber,
                                           std::uint8_t depth, std::string &problem);

    ~GlxDevice();
    GlxDevice(const GlxDevice &) = delete;
    GlxDevice &operator=(const GlxDevice &) = delete;

    // As the driver calls itself.
    const std::string &rendererName() const { return rendererName_; }

    // True when the processor does the drawing.
    bool isSoftware() const;

    std::uint8_t depth() const { return depth_; }

    // True when the rows of a bound pixmap come from the bottom to the top.
    bool isSourceUpsideDown() const { return isSourceUpsideDown_; }

    // False once the server has cut the connection, which drivers may not expect: nothing but the
    // end makes sense then.
    bool isConnected() const;

    // GLX's names for a pixmap of this depth, which the server may not have made yet on other
    // connections, but has when this is called. Given back with release().
    GLXPixmap makeSource(std::uint32_t pixmap);
    GLXPixmap makeTarget(std::uint32_t pixmap);
    void release(GLXPixmap pixmap);

    // Draws into the target from now on.
    bool makeCurrent(GLXPixmap target);

    // Draws nowhere: whatever was drawn into may be released.
    void rest();

    // Makes the source's pixels as they are now the contents of the bound texture.
    void bind(GLXPixmap source);
    void unbind(GLXPixmap source);

    // Waits until everything that was drawn is in the server's pixmaps. False when something has
    // failed since the last time.
    bool finish();

  private:
    GlxDevice(Display *display, int screenNumber, std::uint8_t depth);

    bool chooseConfigurations(std::string &problem);
    bool makeContext(std::string &problem);
    GLXContext createContext() const;
    int attribute(GLXFBConfig configuration, int name) const;
    bool fits(GLXFBConfig configuration) const;

    Display *display_;
    int screenNumber_;
    std::uint8_t depth_;
    GLXFBConfig sourceConfiguration_ = nullptr;
    GLXFBConfig targetConfiguration_ = nullptr;
    int textureFormat_ = 0;
    bool isSourceUpsideDown_ = false;
    bool reportsResets_ = false;
    GLXContext context_ = nullptr;
    Pixmap restPixmap_ = 0; // current while nothing else is
    GLXPixmap rest_ = 0;
    std::string rendererName_;
};

} // namespace lumo::x11
