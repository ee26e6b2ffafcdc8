#pragma once

#include "Look.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"

#include <ostream>
#include <string>
#include <vector>

namespace lumo::desktop {

// A desktop that a test is run on.
struct Stage {
    std::string name;
    WindowManager windowManager = WindowManager::openbox;
    Compositor compositor = Compositor::none;
    int depth = 24;

    friend std::ostream &operator<<(std::ostream &stream, const Stage &stage) {
        return stream << stage.name;
    }
};

enum class Shown { plain, underEffect };

// What must be seen of one window, or of the wallpaper, at one place where nothing hides it.
struct Sight {
    std::string name;
    xcb_window_t window = XCB_NONE; // none: the wallpaper
    Spot spot;
    Colour colour; // as painted
    Shown shown = Shown::plain;
};

// Looks at what stands on a desktop while the effect is on, in order and in pixels. Every overlay
// must lie above the windows under the effect and below the plain ones that it meets, and must have
// no part in focus.
class Scene {
  public:
    Scene(PrivateDesktop &desktop, LumoProcess &lumo, Look look)
        : desktop_(desktop)
        , lumo_(lumo)
        , look_(std::move(look)) {}

    // Waits until everything is as said; what is wrong at the end, empty when nothing is.
    std::string wrongWith(const std::vector<Sight> &sights);

  private:
    std::string wrongNow(const std::vector<Sight> &sights);
    std::string wrongOrder(const std::vector<LumoProcess::Overlay> &overlays, const Sight &sight);
    std::string wrongPixel(const std::vector<LumoProcess::Overlay> &overlays, const Sight &sight);

    PrivateDesktop &desktop_;
    LumoProcess &lumo_;
    Look look_;
};

} // namespace lumo::desktop
