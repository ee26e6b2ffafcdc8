#include "ThreeWindows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>

namespace lumo::desktop {

void ThreeWindows::show(const std::vector<Subject> &clear, const std::vector<Subject> &covered) {
    bringForward(red);
    lumo.emplace(desktop, look_.preferences());
    lumo->waitForOverlays(std::max(outputs_.size(), std::size_t{1}));
    EXPECT_EQ(wrongWith(clear, covered), "");
}

Area ThreeWindows::displayAt(Spot spot) {
    const auto found = std::ranges::find_if(
        outputs_, [&](const OutputUse &use) { return use.area.contains(spot.x, spot.y); });
    return found == outputs_.end() ? session.screenArea() : found->area;
}

void ThreeWindows::bringForward(const SubjectApplication &application) {
    const xcb_window_t window = application.subject.window;
    const auto manager = session.windowManagerName();
    if (manager) {
        session.activate(window);
        EXPECT_TRUE(session.eventually([&] { return session.activeWindow() == window; }));
    } else {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(session.connection(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    }
    if (!manager || manager == "Enlightenment") { // the focus follows the pointer
        const Area area = session.areaOf(window);
        session.movePointerTo(area.x + area.width / 2, area.y + area.height / 2);
    }
}

bool ThreeWindows::isSupported(std::string_view hint) {
    const auto supported = session.numbers(session.root(), "_NET_SUPPORTED");
    return session.windowManagerName() &&
           std::ranges::find(supported, session.atom(hint)) != supported.end();
}

std::vector<Spot> ThreeWindows::spotsIn(xcb_window_t window) {
    std::set<xcb_window_t> ours;
    for (const auto &overlay : lumo->overlays()) {
        ours.insert(session.frameOf(overlay.window));
    }
    std::vector<Area> above;
    const auto order = session.stacking();
    auto place = std::ranges::find(order, session.frameOf(window));
    while (place != order.end() && ++place != order.end()) {
        if (!ours.contains(*place) && session.isViewable(*place) && session.isDrawn(*place)) {
            constexpr int shadow = 40; // as compositing managers draw around windows
            const Area frame = session.frameAreaOf(*place);
            above.push_back({frame.x - shadow, frame.y - shadow, frame.width + 2 * shadow,
                             frame.height + 2 * shadow});
        }
    }
    const Area area = session.areaOf(window);
    const Area screen = session.screenArea();
    std::vector<Spot> spots;
    constexpr int steps = 9;
    for (int row = 1; row < steps; ++row) {
        for (int column = 1; column < steps; ++column) {
            const Spot spot = {area.x + area.width * column / steps,
                               area.y + area.height * row / steps};
            const auto hides = [&](const Area &other) { return other.contains(spot.x, spot.y); };
            if (hides(screen) && std::ranges::none_of(above, hides)) {
                spots.push_back(spot);
            }
        }
    }
    return spots;
}

std::string ThreeWindows::wrongIn(const Subject &subject, bool isClear) {
    const auto spots = spotsIn(subject.window);
    if (spots.empty()) {
        return "a window is hidden";
    }
    for (const Spot &spot : {spots.front(), spots[spots.size() / 2], spots.back()}) {
        const Colour pixel = session.pixel(spot);
        const Area display = displayAt(spot);
        const Colour expected =
            isClear ? subject.colour
                    : look_.over(subject.colour,
                                 grainAt(display.width, {spot.x - display.x, spot.y - display.y}));
        if (distance(pixel, expected) > (isClear ? 0 : tolerance)) {
            return "at " + std::to_string(spot.x) + "," + std::to_string(spot.y) + " " +
                   pixel.describe() + " instead of " + expected.describe();
        }
    }
    return {};
}

std::string ThreeWindows::wrongNow(const std::vector<Subject> &clear,
                                   const std::vector<Subject> &covered) {
    for (const bool isClear : {true, false}) {
        for (const auto &subject : isClear ? clear : covered) {
            if (auto wrong = wrongIn(subject, isClear); !wrong.empty()) {
                return wrong;
            }
        }
    }
    for (const auto &overlay : lumo->overlays()) {
        if (session.focusedWindow() == overlay.window || session.activeWindow() == overlay.window) {
            return "an overlay has the focus";
        }
    }
    return {};
}

std::string ThreeWindows::wrongUntilNone(const std::function<std::string()> &look) {
    const auto wrong = session.wrongUntilNone(look);
    return wrong.empty() ? wrong : wrong + "\n" + lumo->process().report();
}

std::string ThreeWindows::wrongWith(const std::vector<Subject> &clear,
                                    const std::vector<Subject> &covered) {
    return wrongUntilNone([&] { return wrongNow(clear, covered); });
}

std::string ThreeWindows::wrongWithOnly(const SubjectApplication &clear) {
    std::vector<Subject> covered = {red.subject, green.subject, blue.subject};
    std::erase_if(covered,
                  [&](const Subject &subject) { return subject.window == clear.subject.window; });
    return wrongWith({clear.subject}, covered);
}

std::string ThreeWindows::wrongWithFocused(const SubjectApplication &focused) {
    const auto hides = [&](xcb_window_t window) {
        const Area upper = session.frameAreaOf(window);
        const Area lower = session.frameAreaOf(focused.subject.window);
        return session.isAbove(session.frameOf(window), session.frameOf(focused.subject.window)) &&
               upper.x < lower.right() && lower.x < upper.right() && upper.y < lower.bottom() &&
               lower.y < upper.bottom();
    };
    return wrongUntilNone([&] {
        std::vector<Subject> clear = {focused.subject};
        std::vector<Subject> covered;
        for (const auto *other : {&red, &green, &blue}) {
            if (other != &focused) {
                (hides(other->subject.window) ? clear : covered).push_back(other->subject);
            }
        }
        return wrongNow(clear, covered);
    });
}

std::string ThreeWindows::wrongWithFrontmostClear() {
    return wrongUntilNone([&] {
        std::vector<Subject> upwards = {red.subject, green.subject, blue.subject};
        const auto order = session.stacking();
        std::ranges::sort(upwards, {}, [&](const Subject &subject) {
            return std::ranges::find(order, session.frameOf(subject.window)) - order.begin();
        });
        auto front = std::ranges::find(upwards, session.activeWindow(), &Subject::window);
        if (front == upwards.end() || !session.windowManagerName()) {
            front = upwards.end() - 1;
        }
        return wrongNow({*front}, {upwards.begin(), front});
    });
}

std::string ThreeWindows::placementSeen() {
    const auto overlays = lumo->overlays();
    if (overlays.empty()) {
        return {};
    }
    const xcb_window_t overlay = overlays.front().window;
    if (!session.isOverrideRedirect(overlay)) {
        return "managed";
    }
    const bool isOnTop = std::ranges::all_of(
        std::array{red.subject.window, green.subject.window, blue.subject.window},
        [&](xcb_window_t window) {
            return !session.isViewable(window) || session.isAbove(overlay, session.frameOf(window));
        });
    // A clear window may lie above cut-outs too.
    return isOnTop || session.isShaped(overlay) ? "cut-outs" : "below";
}

} // namespace lumo::desktop
