#pragma once

#include "MirroredDesktop.h"
#include "platform/Screens.h"
#include "platform/freedesktop/GlibMainLoop.h"
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
    double alpha = 1; // the window's times the view's
};

// The program's overlays on a private desktop with one display.
class OverlayDesktop : public MirroredDesktop, private Screens {
  public:
    explicit OverlayDesktop(const desktop::DesktopOptions &options, double pixelsPerPoint = 1);

    // Makes the overlays' maker anew, with LUMO_RENDERER set to that. No overlay is there.
    void useRenderer(const std::string &name);

    // Turns the main loop until the condition holds. False when it does not within a minute.
    bool eventually(const std::function<bool()> &condition);

    // Turns the main loop once and gives how many bytes of requests that took.
    std::uint64_t bytesOfTurn();

    // Turns the main loop until all that has happened and been asked for so far is shown.
    void settle();

    Rect frame() const; // of the display

    // A view of that size with a grain layer, its pixels those of grain(), and a colour over it.
    LayerTree tree(const Rect &frame, const Look &look = {}) const;
    static std::shared_ptr<const Image> grain(int width, int height);

    // Empty when, within the area, the look laid over the plain picture is what the shown one
    // shows, give or take two steps of a channel; else where it is not. The overlay covers the
    // frame.
    std::string difference(const desktop::Picture &plain, const desktop::Picture &shown,
                           const desktop::Area &area, const desktop::Area &frame,
                           const Look &look) const;

    // The difference that is left when the overlay has had some time to look right, with the wish
    // repeated as the program does, and with the plain picture taken by making it transparent for
    // a moment.
    std::string lastingDifference(PlatformWindow &overlay, const desktop::Area &area,
                                  const std::function<void()> &wish);

    desktop::Area wholeArea() const { return {0, 0, width, height}; }

    int width;
    int height;
    double scale;
    std::vector<std::string> lines; // of the log
    freedesktop::GlibMainLoop loop;
    std::unique_ptr<X11OverlayWindows> overlays;

  private:
    void makeOverlays();
    const std::vector<Screen> &screens() const override { return screens_; }
    Handle onScreenParametersDidChange(std::function<void()> /*observer*/) override { return {}; }

    Log log_;
    std::vector<Screen> screens_;
    Handle watch_;
};

} // namespace lumo::x11
