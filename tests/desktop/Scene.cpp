#include "Scene.h"

#include <algorithm>
#include <sstream>

namespace lumo::desktop {

std::string Scene::wrongWith(const std::vector<Sight> &sights) {
    std::string wrong;
    DesktopSession &session = desktop_.session();
    const bool isRight = session.eventually([&] {
        wrong = wrongNow(sights);
        return wrong.empty();
    });
    if (isRight) {
        return {};
    }
    std::ostringstream text;
    text << wrong << "\nbottom to top:";
    for (const xcb_window_t window : session.stacking()) {
        if (session.isViewable(window)) {
            text << " " << window << " " << session.classOf(window);
        }
    }
    for (const Sight &sight : sights) {
        if (sight.window != XCB_NONE) {
            text << "; " << sight.name << " is in " << session.frameOf(sight.window);
        }
    }
    text << "\n" << lumo_.process().report();
    return text.str();
}

std::string Scene::wrongNow(const std::vector<Sight> &sights) {
    DesktopSession &session = desktop_.session();
    const auto overlays = lumo_.overlays();
    if (overlays.empty()) {
        return "no overlay";
    }
    for (const auto &overlay : overlays) {
        if (session.focusedWindow() == overlay.window || session.activeWindow() == overlay.window) {
            return "an overlay has the focus";
        }
    }
    for (const Sight &sight : sights) {
        for (const std::string &wrong :
             {wrongOrder(overlays, sight), wrongPixel(overlays, sight)}) {
            if (!wrong.empty()) {
                return wrong;
            }
        }
    }
    return {};
}

std::string Scene::wrongOrder(const std::vector<LumoProcess::Overlay> &overlays,
                              const Sight &sight) {
    if (sight.window == XCB_NONE) {
        return {};
    }
    const auto order = desktop_.session().stacking();
    const auto placeOf = [&](xcb_window_t window) {
        return std::find(order.begin(), order.end(), window) - order.begin();
    };
    const auto place = placeOf(desktop_.session().frameOf(sight.window));
    for (const auto &overlay : overlays) {
        if (overlay.area.contains(sight.spot.x, sight.spot.y) &&
            (place > placeOf(overlay.window)) != (sight.shown == Shown::plain)) {
            return sight.name + " is on the wrong side of the overlay";
        }
    }
    return {};
}

std::string Scene::wrongPixel(const std::vector<LumoProcess::Overlay> &overlays,
                              const Sight &sight) {
    const Colour pixel = desktop_.session().pixel(sight.spot);
    if (sight.shown == Shown::plain) {
        return pixel == sight.colour ? std::string()
                                     : sight.name + " shows " + pixel.describe() +
                                           " instead of plain " + sight.colour.describe();
    }
    for (const auto &overlay : overlays) {
        if (overlay.area.contains(sight.spot.x, sight.spot.y)) {
            const int x = sight.spot.x - overlay.area.x;
            const int y = sight.spot.y - overlay.area.y;
            const Colour expected = look_.over(sight.colour, grainAt(overlay.area.width, {x, y}));
            return distance(pixel, expected) <= tolerance
                       ? std::string()
                       : sight.name + " shows " + pixel.describe() + " instead of " +
                             expected.describe() + " under the effect";
        }
    }
    return sight.name + " is under no overlay";
}

} // namespace lumo::desktop
