#include "overlay/OverlayScreenView.h"

#include "ScriptedDesktop.h"
#include "platform/OverlayWindows.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

namespace lumo {
namespace {

using testing::ElementsAre;

class OverlayScreenViewTest : public testing::Test {
  protected:
    OverlayScreenViewTest() { desktop.plugDisplay(1, frame, 2); }

    const test::OverlayState &shown() const { return *desktop.allOverlays().back(); }
    const Layer &tint() const { return view.layerTree().layers.back(); }

    const Rect frame{10, 20, 101, 53};
    test::ScriptedDesktop desktop{100};
    std::unique_ptr<PlatformWindow> window{desktop.platform().overlayWindows.makeWindow(frame)};
    OverlayScreenView view{frame, *window, desktop.platform()};
};

TEST_F(OverlayScreenViewTest, OverlappingCutOutsCoverAgain) {
    const Rect bounds{0, 0, 101, 53};
    const Rect left{5, 5, 20, 20};
    const Rect right{15, 5, 20, 20};
    view.applyExclusionMask({left, Rect::null(), {3, 3, 0, 10}, right});
    ASSERT_TRUE(view.layerTree().mask.has_value());
    EXPECT_EQ(view.layerTree().mask->frame, bounds);
    EXPECT_THAT(view.layerTree().mask->rectangles, ElementsAre(bounds, left, right));

    view.applyExclusionMask({Rect::null(), {}});
    EXPECT_THAT(view.layerTree().mask->rectangles, ElementsAre(bounds))
        << "a mask without cut-outs";
    view.applyExclusionMask({});
    EXPECT_EQ(view.layerTree().mask, std::nullopt);
}

TEST_F(OverlayScreenViewTest, LayoutOnlyForAnotherSizeOrScale) {
    const int commits = shown().commits;
    view.setFrame(frame);
    view.setFrame(frame.translated(300, 0));
    EXPECT_EQ(shown().commits, commits);

    desktop.resizeDisplay(1, frame, 1.25);
    view.setFrame(frame);
    EXPECT_EQ(shown().tree->layers[2].contentsScale, 1.25);
    view.setFrame({10, 20, 102, 53});
    EXPECT_EQ(shown().tree->bounds, (Rect{0, 0, 102, 53}));
    EXPECT_EQ(shown().tree->layers.back().frame, (Rect{0, 0, 102, 53}));

    // Off every screen the main screen's scale counts, and without any screen a fixed one.
    window->setFrame(frame.translated(5000, 0));
    desktop.resizeDisplay(1, frame, 3);
    view.layout();
    EXPECT_EQ(shown().tree->layers[2].contentsScale, 3);
    desktop.unplugDisplay(1);
    view.layout();
    EXPECT_EQ(shown().tree->layers[2].contentsScale, 2);
}

} // namespace
} // namespace lumo
