#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>

namespace lumo::x11 {
namespace {

using desktop::Colour;
using desktop::DesktopOptions;
using desktop::SampleApplication;

const DesktopOptions smallDesktop{.width = 800, .height = 600};

class OverlayChanges : public testing::Test, protected OverlayDesktop {
  protected:
    OverlayChanges()
        : OverlayDesktop(smallDesktop) {
        overlay_ = overlays->makeWindow(frame());
        overlay_->commit(tree(frame()));
    }

    std::function<void()> inFront() {
        return [this] { overlay_->orderFront(); };
    }

    std::unique_ptr<PlatformWindow> overlay_;
};

TEST_F(OverlayChanges, WallpaperFromEachSource) {
    overlay_->orderFront();
    // The root window's own background, as plain programs set it.
    EXPECT_EQ(lastingDifference(*overlay_, wholeArea(), inFront()), "");
    // A pixmap that a property names, and another one.
    for (const Colour colour : {Colour{200, 100, 50}, Colour{50, 100, 200}}) {
        desktop::Picture wallpaper(800, 600);
        for (int x = 0; x < 800 * 600; ++x) {
            wallpaper.at(x % 800, x / 800) = {colour.red, colour.green,
                                              static_cast<std::uint8_t>(x % 256)};
        }
        const Colour before = session.pixel(400, 300);
        session.setWallpaper(wallpaper);
        EXPECT_TRUE(eventually([&] { return session.pixel(400, 300) != before; }));
        settle();
        EXPECT_EQ(lastingDifference(*overlay_, wholeArea(), inFront()), "");
        EXPECT_EQ(difference(wallpaper, session.picture(), wholeArea(), wholeArea(), {}), "");
    }
    // A window that is the desktop.
    SampleApplication files(
        desktop, "Files",
        {{.area = {0, 0, 800, 600}, .colour = "#208060", .type = "DESKTOP", .page = true}});
    EXPECT_EQ(lastingDifference(*overlay_, wholeArea(), inFront()), "");
}

} // namespace
} // namespace lumo::x11
