#pragma once

#include "MirroredDesktop.h"
#include "platform/Screens.h"
#include "platform/x11/GlibMainLoop.h"
#include "platform/x11/X11OverlayWindows.h"
#include "support/Log.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumo::x11 {

// The part of a look that the pixels depend on.
struct Look {
    double grain = 0.19;
    Color tint = Color::black();
    double tintOpacity = 0.36;
};

// Overlays of the program on a private desktop with one display of 800 by 600 pixels or what the
// options say, at one pixel per point.
class OverlayDesktop : public MirroredDesktop, private Screens {
  public:
    explicit OverlayDesktop(const desktop::DesktopOptions &options);

    // Turns the main loop until the condition holds. False when it does not within ten seconds.
    bool eventually(const std::function<bool()> &condition);

    // Turns the main loop until all that has been asked for so far is done and shown.
    void settle();

    Rect frame() const { return {0, 0, static_cast<double>(width), static_cast<double>(height)}; }
    const std::shared_ptr<const Image> &grain() const { return grain_; }

    // A view with a grain layer and a colour over it, as large as the frame.
    LayerTree tree(const Rect &frame, const Look &look = {}) const;

    // The largest difference of a channel, within the area, between what is shown now and the look
    // laid over what was shown before. The grain's origin is that of the overlay.
    int distanceFromLook(const desktop::Picture &before, const desktop::Area &area,
                         const Look &look = {}, desktop::Spot overlayOrigin = {});

    int width;
    int height;
    std::vector<std::string> lines; // of the log
    GlibMainLoop loop;
    std::unique_ptr<X11OverlayWindows> overlays;

  private:
    const std::vector<Screen> &screens() const override { return screens_; }
    Handle onScreenParametersDidChange(std::function<void()> /*observer*/) override { return {}; }

    Log log_;
    std::vector<Screen> screens_;
    std::shared_ptr<const Image> grain_;
    Handle watch_;
};

} // namespace lumo::x11
