#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>

namespace lumo::x11 {
namespace {

using desktop::Colour;
using desktop::SampleApplication;

TEST(OverlayChanges, WallpaperFromEachSource) {
    OverlayDesktop on({.width = 800, .height = 600});
    const auto overlay = on.overlays->makeWindow(on.frame());
    overlay->commit(on.tree(on.frame()));
    overlay->orderFront();
    const auto wrong = [&] {
        return on.lastingDifference(*overlay, on.wholeArea(), [&] { overlay->orderFront(); });
    };
    // The root window's own background, as plain programs set it.
    EXPECT_EQ(wrong(), "");
    // A pixmap that a property names, and another one.
    for (const Colour colour : {Colour{200, 100, 50}, Colour{50, 100, 200}}) {
        const desktop::Picture wallpaper(800, 600, [&](int x, int y) {
            return Colour{colour.red, colour.green, static_cast<std::uint8_t>((800 * y + x) % 256)};
        });
        const Colour before = on.session.pixel(400, 300);
        on.session.setWallpaper(wallpaper);
        EXPECT_TRUE(on.eventually([&] { return on.session.pixel(400, 300) != before; }));
        on.settle();
        EXPECT_EQ(wrong(), "");
        EXPECT_EQ(
            on.difference(wallpaper, on.session.picture(), on.wholeArea(), on.wholeArea(), {}), "");
    }
    // A window that is the desktop.
    SampleApplication files(
        on.desktop, "Files",
        {{.area = {0, 0, 800, 600}, .colour = "#208060", .type = "DESKTOP", .page = true}});
    EXPECT_EQ(wrong(), "");
}

} // namespace
} // namespace lumo::x11
