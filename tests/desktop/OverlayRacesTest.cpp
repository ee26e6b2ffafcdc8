#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"
#include "reference/EffectLook.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <xcb/shape.h>

#include <array>
#include <csignal>
#include <random>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::Compositor;
using desktop::SampleApplication;

// What happens beneath an overlay faster than anyone can follow must end in the right picture.
class OverlayRaces : public testing::Test, protected OverlayDesktop {
  protected:
    OverlayRaces()
        : OverlayDesktop({.width = 800, .height = 600})
        , overlay_(overlays->makeWindow(frame()))
        , hasty_(session.connection()) {
        // Above the hasty windows, too, which no manager handles.
        overlay_->setLevel(1);
    }

    LayerTree blur() const { return blur(width, height); }

    static LayerTree blur(int width, int height) {
        return reference::EffectLook{
            .effectMode = "softBlur", .intensity = 0.6, .liveBackdrop = true}
            .tree(width, height, 1);
    }

    // Two thousand windows' comings, goings and changes.
    void haste() {
        for (int step = 0; step < 2000; ++step) {
            if (windows_.size() < 12 || number(0, 3) == 0) {
                open();
            } else {
                change(number(0, static_cast<unsigned>(windows_.size()) - 1));
            }
            if (number(0, 4) == 0) {
                xcb_flush(hasty_);
                overlay_->orderFront();
                bytesOfTurn();
            }
        }
        xcb_flush(hasty_);
    }

    // The picture once nothing changes any more.
    desktop::Picture lastingPicture() {
        auto picture = session.picture();
        int rounds = 0;
        eventually([&] {
            settle();
            auto next = session.picture();
            rounds = next.differenceFrom(picture, wholeArea()).empty() ? rounds + 1 : 0;
            picture = std::move(next);
            return rounds == 3;
        });
        return picture;
    }

    // Where what an overlay shows differs by more than rounding from what one shows that has seen
    // nothing but the end; empty for nowhere.
    std::string differenceFromFresh() {
        const auto shown = lastingPicture();
        overlay_ = overlays->makeWindow(frame());
        overlay_->setLevel(1);
        overlay_->commit(blur());
        overlay_->orderFront();
        EXPECT_TRUE(eventually([&] {
            return session.isViewable(static_cast<xcb_window_t>(overlay_->windowNumber()));
        }));
        return shown.differenceFrom(lastingPicture(), wholeArea(), 2);
    }

    std::unique_ptr<PlatformWindow> overlay_;

  private:
    std::uint32_t number(unsigned from, unsigned to) {
        return std::uniform_int_distribution<std::uint32_t>(from, to)(random_);
    }

    void open() {
        windows_.push_back(xcb_generate_id(hasty_));
        const std::array<std::uint32_t, 3> attributes = {number(0, 0xffffff), 0, 1};
        xcb_create_window(hasty_, XCB_COPY_FROM_PARENT, windows_.back(), session.root(), 0, 0, 200,
                          200, static_cast<std::uint16_t>(number(0, 4)),
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT,
                          attributes.data());
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(hasty_, windows_.back(), XCB_CONFIG_WINDOW_STACK_MODE, &below);
        xcb_map_window(hasty_, windows_.back());
    }

    void change(std::uint32_t which) {
        const auto window = windows_[which];
        if (number(0, 2) == 0) {
            xcb_destroy_window(hasty_, window);
            windows_.erase(windows_.begin() + which);
        } else if (number(0, 3) == 0) {
            xcb_unmap_window(hasty_, window);
        } else if (number(0, 2) == 0) {
            const std::array<xcb_rectangle_t, 2> parts = {{{0, 0, 90, 40}, {60, 20, 300, 150}}};
            xcb_shape_rectangles(hasty_, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING,
                                 XCB_CLIP_ORDERING_UNSORTED, window, 5, 5, parts.size(),
                                 parts.data());
        } else {
            const std::array<std::uint32_t, 4> place = {number(0, 700), number(0, 500),
                                                        number(1, 400), number(1, 300)};
            xcb_configure_window(hasty_, window,
                                 XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y |
                                     XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                                 place.data());
            xcb_map_window(hasty_, window);
        }
    }

    xcb_connection_t *hasty_;
    std::vector<xcb_window_t> windows_;
    std::mt19937 random_{static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())};
};

TEST_F(OverlayRaces, WindowsBeneathPlainLayers) {
    overlay_->commit(tree(frame()));
    overlay_->orderFront();
    settle();
    haste();
    EXPECT_EQ(lastingDifference(*overlay_, wholeArea(), [&] { overlay_->orderFront(); }), "");
    EXPECT_FALSE(connection->isLost());
}

TEST_F(OverlayRaces, WindowsBeneathABlur) {
    overlay_->commit(blur());
    overlay_->orderFront();
    settle();
    haste();
    settle();
    EXPECT_EQ(differenceFromFresh(), "");
    EXPECT_FALSE(connection->isLost());
    EXPECT_EQ(lines, std::vector<std::string>());
}

// As when a display is plugged in while the overlays of others show.
TEST_F(OverlayRaces, OverlaysOfAServerThatDoesNotReply) {
    settle();
    // What is drawn has to fit into the connection's buffer.
    constexpr Rect part = {0, 0, 100, 100};
    desktop.server().signal(SIGSTOP);
    alarm(30); // a wait for the server would last forever
    const auto added = overlays->makeWindow(part);
    added->commit(tree(part));
    added->orderFront();
    EXPECT_EQ(bytesOfTurn(), 0) << "mapped before clicks are known to go through";
    overlay_->setFrame(part);
    overlay_->orderFront();
    for (const auto &look : {tree(part), blur(100, 100)}) {
        overlay_->commit(look);
        bytesOfTurn();
    }
    desktop.server().signal(SIGCONT);
    alarm(0);
    for (const auto *overlay : {overlay_.get(), added.get()}) {
        EXPECT_TRUE(eventually([&] {
            return session.isViewable(static_cast<xcb_window_t>(overlay->windowNumber()));
        }));
    }

    // Gone before the reply arrives.
    overlays->makeWindow(part)->orderFront();
    settle();
    EXPECT_FALSE(connection->isLost());
}

TEST_F(OverlayRaces, CompositingManagersComeAndGo) {
    SampleApplication app(desktop, "Sample", {{.area = {60, 60, 300, 250}, .colour = "#c83232"}});
    overlay_->commit(blur());
    overlay_->orderFront();
    settle();
    app.animate(0, true);
    for (int round = 0; round < 20; ++round) {
        desktop.startCompositor(round % 4 == 3 ? Compositor::picomGlx : Compositor::picomXrender);
        bytesOfTurn();
        desktop.stopCompositor();
        bytesOfTurn();
    }
    app.animate(0, false);
    EXPECT_TRUE(eventually([&] { return !overlays->isCompositing(); }));
    settle();
    EXPECT_EQ(differenceFromFresh(), "");

    desktop.startCompositor(Compositor::picomXrender);
    EXPECT_TRUE(eventually([&] { return overlays->isCompositing(); }));
    overlay_->commit(tree(frame()));
    settle();
    desktop.stopCompositor();
    EXPECT_TRUE(eventually([&] { return !overlays->isCompositing(); }));
    EXPECT_EQ(lastingDifference(*overlay_, wholeArea(), [&] { overlay_->orderFront(); }), "")
        << "plain layers that a compositing manager blended";
    EXPECT_EQ(lines, std::vector<std::string>());
}

} // namespace
} // namespace lumo::x11
