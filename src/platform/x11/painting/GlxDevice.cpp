#include "platform/x11/painting/GlxDevice.h"

#include <X11/Xlib-xcb.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace lumo::x11 {

namespace {

// Xlib has one handler of errors for the whole process and gives it nothing of ours. An error is
// handled by the thread that uses the display that it is about.
struct Errors {
    Display *display = nullptr; // whose errors are counted
    int count = 0;
};

Errors &errorsOfThread() {
    thread_local Errors errors;
    return errors;
}

struct OtherHandlers {
    std::atomic<XErrorHandler> error = nullptr;
    std::atomic<XIOErrorHandler> loss = nullptr;
};

OtherHandlers &otherHandlers() {
    static OtherHandlers handlers;
    return handlers;
}

int noteError(Display *display, XErrorEvent *event) {
    if (display == errorsOfThread().display) {
        ++errorsOfThread().count;
        return 0;
    }
    auto *const other = otherHandlers().error.load();
    return other != nullptr ? other(display, event) : 0;
}

int noteLoss(Display *display) {
    if (display == errorsOfThread().display) {
        ++errorsOfThread().count;
        return 0;
    }
    auto *const other = otherHandlers().loss.load();
    return other != nullptr ? other(display) : 0;
}

// Toolkits set handlers of their own, so it is looked after each time.
void installErrorHandlers() {
    if (auto *const handler = XSetErrorHandler(noteError); handler != noteError) {
        otherHandlers().error = handler;
    }
    if (auto *const handler = XSetIOErrorHandler(noteLoss); handler != noteLoss) {
        otherHandlers().loss = handler;
    }
}

} // namespace

std::unique_ptr<GlxDevice> GlxDevice::open(const std::string &displayName, int screenNumber,
                                           std::uint8_t depth, std::string &problem) {
    installErrorHandlers();
    Display *display = XOpenDisplay(displayName.empty() ? nullptr : displayName.c_str());
    if (display == nullptr) {
        problem = "the display does not open a second time";
        return nullptr;
    }
    errorsOfThread() = {display, 0};
    // Without this Xlib would end the process when the server goes away.
    XSetIOErrorExitHandler(
        display, [](Display *, void *) {}, nullptr);
    std::unique_ptr<GlxDevice> device(new GlxDevice(display, screenNumber, depth));
    if (!device->chooseConfigurations(problem) || !device->makeContext(problem)) {
        return nullptr;
    }
    return device;
}

GlxDevice::GlxDevice(Display *display, int screenNumber, std::uint8_t depth)
    : display_(display)
    , screenNumber_(screenNumber)
    , depth_(depth) {
}

GlxDevice::~GlxDevice() {
    if (context_ != nullptr) {
        glXMakeContextCurrent(display_, None, None, nullptr);
        glXDestroyContext(display_, context_);
    }
    if (rest_ != None) {
        glXDestroyPixmap(display_, rest_);
        XFreePixmap(display_, restPixmap_);
    }
    XCloseDisplay(display_);
    errorsOfThread() = {};
}

int GlxDevice::attribute(GLXFBConfig configuration, int name) const {
    int value = 0;
    return glXGetFBConfigAttrib(display_, configuration, name, &value) == Success ? value : 0;
}

// Colours as in the server's own visuals of that depth.
bool GlxDevice::fits(GLXFBConfig configuration) const {
    const int color = attribute(configuration, GLX_RED_SIZE) +
                      attribute(configuration, GLX_GREEN_SIZE) +
                      attribute(configuration, GLX_BLUE_SIZE);
    const int alpha = attribute(configuration, GLX_ALPHA_SIZE);
    if ((attribute(configuration, GLX_DRAWABLE_TYPE) & GLX_PIXMAP_BIT) == 0 ||
        (attribute(configuration, GLX_RENDER_TYPE) & GLX_RGBA_BIT) == 0 ||
        attribute(configuration, GLX_SAMPLE_BUFFERS) != 0 ||
        (depth_ == 32 ? color != 24 || alpha != 8 : color != depth_ || alpha != 0)) {
        return false;
    }
    XVisualInfo *visual = glXGetVisualFromFBConfig(display_, configuration);
    const bool hasDepth = visual != nullptr && visual->depth == depth_;
    XFree(visual);
    return hasDepth;
}

bool GlxDevice::chooseConfigurations(std::string &problem) {
    // Also finds out whether there is a library at all, without which the others would abort.
    if (!epoxy_has_glx(display_) || epoxy_glx_version(display_, screenNumber_) < 13 ||
        !epoxy_has_glx_extension(display_, screenNumber_, "GLX_EXT_texture_from_pixmap") ||
        !epoxy_has_glx_extension(display_, screenNumber_, "GLX_ARB_create_context")) {
        problem = "GLX cannot draw from pixmaps";
        return false;
    }
    int count = 0;
    GLXFBConfig *all = glXGetFBConfigs(display_, screenNumber_, &count);
    const int formatBit = depth_ == 32 ? GLX_BIND_TO_TEXTURE_RGBA_EXT : GLX_BIND_TO_TEXTURE_RGB_EXT;
    textureFormat_ = depth_ == 32 ? GLX_TEXTURE_FORMAT_RGBA_EXT : GLX_TEXTURE_FORMAT_RGB_EXT;
    for (auto *const configuration : std::span(all, static_cast<std::size_t>(count))) {
        if (!fits(configuration)) {
            continue;
        }
        if (sourceConfiguration_ == nullptr && attribute(configuration, formatBit) != 0 &&
            (attribute(configuration, GLX_BIND_TO_TEXTURE_TARGETS_EXT) & GLX_TEXTURE_2D_BIT_EXT) !=
                0) {
            sourceConfiguration_ = configuration;
        }
        // With two buffers, what is drawn to the one would have to be brought to the other.
        if (targetConfiguration_ == nullptr && attribute(configuration, GLX_DOUBLEBUFFER) == 0) {
            targetConfiguration_ = configuration;
        }
    }
    XFree(static_cast<void *>(all));
    if (sourceConfiguration_ == nullptr || targetConfiguration_ == nullptr) {
        problem = "GLX cannot draw into pixmaps of depth " + std::to_string(depth_);
        return false;
    }
    isSourceUpsideDown_ = attribute(sourceConfiguration_, GLX_Y_INVERTED_EXT) == 0;
    return true;
}

GLXContext GlxDevice::createContext() const {
    std::vector<int> attributes = {GLX_CONTEXT_MAJOR_VERSION_ARB, 3,
                                   GLX_CONTEXT_MINOR_VERSION_ARB, 3,
                                   GLX_CONTEXT_PROFILE_MASK_ARB,  GLX_CONTEXT_CORE_PROFILE_BIT_ARB};
    if (reportsResets_) {
        attributes.insert(attributes.end(),
                          {GLX_CONTEXT_FLAGS_ARB, GLX_CONTEXT_ROBUST_ACCESS_BIT_ARB,
                           GLX_CONTEXT_RESET_NOTIFICATION_STRATEGY_ARB,
                           GLX_LOSE_CONTEXT_ON_RESET_ARB});
    }
    attributes.push_back(None);
    return glXCreateContextAttribsARB(display_, targetConfiguration_, nullptr, True,
                                      attributes.data());
}

bool GlxDevice::makeContext(std::string &problem) {
    reportsResets_ =
        epoxy_has_glx_extension(display_, screenNumber_, "GLX_ARB_create_context_robustness");
    context_ = createContext();
    if (context_ == nullptr && reportsResets_) {
        reportsResets_ = false;
        context_ = createContext();
    }
    XSync(display_, False);
    errorsOfThread().count = 0;
    restPixmap_ = XCreatePixmap(display_, RootWindow(display_, screenNumber_), 1, 1, depth_);
    rest_ = makeTarget(static_cast<std::uint32_t>(restPixmap_));
    if (context_ == nullptr || glXIsDirect(display_, context_) == False || !makeCurrent(rest_) ||
        epoxy_gl_version() < 33) {
        problem = "there is no OpenGL 3.3 without a detour over the network";
        return false;
    }
    reportsResets_ = reportsResets_ && epoxy_has_gl_extension("GL_ARB_robustness");
    if (const auto *name = glGetString(GL_RENDERER)) {
        rendererName_ = reinterpret_cast<const char *>(name);
    }
    if (!finish()) {
        problem = "OpenGL fails while starting";
        return false;
    }
    return true;
}

bool GlxDevice::isSoftware() const {
    std::string name = rendererName_;
    std::ranges::transform(name, name.begin(), [](unsigned char letter) {
        return static_cast<char>(std::tolower(letter));
    });
    constexpr std::array<std::string_view, 5> rasterizers = {
        "llvmpipe", "softpipe", "software rasterizer", "swrast", "openswr"};
    return std::ranges::any_of(rasterizers, [&](std::string_view rasterizer) {
        return name.find(rasterizer) != std::string::npos;
    });
}

bool GlxDevice::isConnected() const {
    XEventsQueued(display_, QueuedAfterReading);
    return xcb_connection_has_error(XGetXCBConnection(display_)) == 0;
}

GLXPixmap GlxDevice::makeSource(std::uint32_t pixmap) {
    const std::array attributes = {GLX_TEXTURE_TARGET_EXT, GLX_TEXTURE_2D_EXT,
                                   GLX_TEXTURE_FORMAT_EXT, textureFormat_, int{None}};
    return glXCreatePixmap(display_, sourceConfiguration_, pixmap, attributes.data());
}

GLXPixmap GlxDevice::makeTarget(std::uint32_t pixmap) {
    return glXCreatePixmap(display_, targetConfiguration_, pixmap, nullptr);
}

void GlxDevice::release(GLXPixmap pixmap) {
    glXDestroyPixmap(display_, pixmap);
}

bool GlxDevice::makeCurrent(GLXPixmap target) {
    return glXMakeContextCurrent(display_, target, target, context_) != False;
}

void GlxDevice::rest() {
    makeCurrent(rest_);
}

void GlxDevice::bind(GLXPixmap source) {
    glXBindTexImageEXT(display_, source, GLX_FRONT_LEFT_EXT, nullptr);
}

void GlxDevice::unbind(GLXPixmap source) {
    glXReleaseTexImageEXT(display_, source, GLX_FRONT_LEFT_EXT);
}

bool GlxDevice::finish() {
    glFinish();
    const bool isWhole = !reportsResets_ || glGetGraphicsResetStatusARB() == GL_NO_ERROR;
    const bool isRight = glGetError() == GL_NO_ERROR;
    XSync(display_, False);
    // Events that the server sends to every client are of no use here.
    while (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
    }
    const bool hasErrors = std::exchange(errorsOfThread().count, 0) > 0;
    return isWhole && isRight && !hasErrors;
}

} // namespace lumo::x11
