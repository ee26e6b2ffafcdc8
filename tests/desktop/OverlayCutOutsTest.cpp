#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>
#include <xcb/shape.h>

#include <cstdlib>
#include <memory>

namespace lumo::x11 {
namespace {

using desktop::Area;
using desktop::SampleApplication;
using desktop::Spot;

// Without a window manager an overlay lies on top, with cut-outs.
class OverlayCutOuts : public testing::Test, protected OverlayDesktop {
  protected:
    OverlayCutOuts()
        : OverlayDesktop(
              {.width = 800, .height = 600, .windowManager = desktop::WindowManager::none}) {
        overlay_->commit(tree(frame()));
    }

    bool covers(const Spot &spot) {
        auto *server = session.connection();
        const std::unique_ptr<xcb_shape_get_rectangles_reply_t, decltype(&std::free)> reply(
            xcb_shape_get_rectangles_reply(
                server,
                xcb_shape_get_rectangles(server,
                                         static_cast<xcb_window_t>(overlay_->windowNumber()),
                                         XCB_SHAPE_SK_BOUNDING),
                nullptr),
            &std::free);
        if (!reply) {
            return false; // the server knows of no overlay yet
        }
        bool isWithin = false;
        auto rectangle = xcb_shape_get_rectangles_rectangles_iterator(reply.get());
        for (; rectangle.rem > 0; xcb_rectangle_next(&rectangle)) {
            const auto &area = *rectangle.data;
            isWithin |= Area{area.x, area.y, area.width, area.height}.contains(spot.x, spot.y);
        }
        return isWithin;
    }

    // Empty when the overlay comes to cover exactly the first of these, without being asked to.
    std::string wrongCover(const std::vector<Spot> &covered, const std::vector<Spot> &clear) {
        std::string wrong;
        eventually([&] {
            wrong.clear();
            for (const bool isCovered : {true, false}) {
                for (const auto &spot : isCovered ? covered : clear) {
                    if (covers(spot) != isCovered) {
                        wrong += std::to_string(spot.x) + "," + std::to_string(spot.y) +
                                 (isCovered ? " is clear; " : " is covered; ");
                    }
                }
            }
            return wrong.empty();
        });
        return wrong;
    }

    // From the bottom to the top.
    SampleApplication app_{desktop,
                           "Sample",
                           {{.area = {0, 570, 800, 30}, .type = "DOCK"},
                            {.area = {20, 60, 300, 250}, .colour = "#4080c0"},
                            {.area = {150, 180, 300, 250}, .colour = "#c08040"},
                            {.area = {400, 300, 150, 100}, .colour = "#40c080"},
                            {.area = {700, 400, 80, 100}, .overrideRedirect = true}}};
    std::unique_ptr<PlatformWindow> overlay_ = overlays->makeWindow(frame());

    static constexpr Spot inDock = {10, 580};
    static constexpr Spot inLowest = {40, 100};
    static constexpr Spot inReference = {250, 350};
    static constexpr Spot inHigher = {530, 380};
    static constexpr Spot inMenu = {720, 450};
    static constexpr Spot inNothing = {700, 50};
};

TEST_F(OverlayCutOuts, FollowTheWindows) {
    // A window of the program's own in a client's panel, as a tray icon is, makes that no overlay.
    const auto icon = xcb_generate_id(*connection);
    xcb_create_window(*connection, XCB_COPY_FROM_PARENT, icon, connection->root(), 0, 0, 20, 20, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_reparent_window(*connection, icon, app_.window(0), 5, 5);
    xcb_map_window(*connection, icon);
    settle();
    overlay_->orderBelow(app_.window(2));
    EXPECT_EQ(wrongCover({inLowest, inNothing}, {inReference, inHigher, inDock, inMenu}), "");

    settle();
    std::uint64_t bytes = 0;
    for (int tick = 0; tick < 60; ++tick) {
        overlay_->orderBelow(app_.window(2));
        bytes += bytesOfTurn();
    }
    EXPECT_EQ(bytes, 0);

    // From here on nothing is asked of the overlay.
    session.move(app_.window(2), 450, 20);
    EXPECT_EQ(wrongCover({inLowest, inReference}, {inNothing, {740, 260}, inHigher}), "");
    session.resize(app_.window(2), 200, 100);
    EXPECT_EQ(wrongCover({inNothing, {600, 200}}, {{500, 60}, inHigher}), "");
    session.resize(app_.window(2), 300, 250);

    auto *server = session.connection();
    const std::array<xcb_rectangle_t, 2> parts = {{{0, 0, 100, 250}, {200, 0, 100, 250}}};
    xcb_shape_rectangles(server, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, 0, app_.window(2), 0, 0,
                         parts.size(), parts.data());
    EXPECT_EQ(wrongCover({{600, 100}}, {{500, 100}, inNothing}), "");
    xcb_shape_mask(server, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, app_.window(2), 0, 0, XCB_NONE);
    const std::array<std::uint32_t, 4> shadows = {20, 20, 10, 30};
    xcb_change_property(server, XCB_PROP_MODE_REPLACE, app_.window(2),
                        session.atom("_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32, 4,
                        shadows.data());
    EXPECT_EQ(wrongCover({{460, 100}, {600, 25}, {600, 250}}, {{600, 100}, {475, 100}}), "");

    // What was clear stays so when the reference goes, and nothing else comes to light.
    app_.closeWindow(2);
    EXPECT_EQ(wrongCover({inLowest, inNothing, {600, 100}}, {inHigher, inMenu, inDock}), "");
    app_.closeWindow(4);
    EXPECT_EQ(wrongCover({inMenu}, {inHigher}), "");
}

// The picture beneath has nothing of the windows that stay clear, wherever they were before.
TEST_F(OverlayCutOuts, AreNoPartOfThePictureBeneath) {
    const auto wish = [this] { overlay_->orderBelow(app_.window(2)); };
    wish();
    EXPECT_EQ(lastingDifference(*overlay_, {0, 0, 149, 560}, wish), "");
    session.move(app_.window(2), 450, 20);
    EXPECT_EQ(lastingDifference(*overlay_, {0, 0, 399, 560}, wish), "");
    // Another one becomes clear: the former is to be seen through the effect.
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(session.connection(), app_.window(1), XCB_CONFIG_WINDOW_STACK_MODE,
                         &above);
    EXPECT_EQ(lastingDifference(*overlay_, {330, 0, 360, 560},
                                [this] { overlay_->orderBelow(app_.window(1)); }),
              "");
}

} // namespace
} // namespace lumo::x11
