#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>

namespace lumo::x11 {
namespace {

using desktop::Area;
using desktop::Compositor;
using desktop::DesktopOptions;
using desktop::Picture;
using desktop::SampleApplication;

DesktopOptions optionsFor(Compositor compositor) {
    return {.width = 800, .height = 600, .compositor = compositor};
}

class OverlayPictures : public testing::TestWithParam<Compositor>, protected OverlayDesktop {
  protected:
    OverlayPictures()
        : OverlayDesktop(optionsFor(GetParam())) {}
};

TEST_P(OverlayPictures, DimAllButTheClearWindow) {
    SampleApplication app(desktop, "Sample",
                          {{.title = "A", .area = {60, 60, 300, 250}, .colour = "#c83232"},
                           {.title = "B", .area = {200, 180, 300, 250}, .colour = "#32c832"},
                           {.title = "C", .area = {420, 300, 300, 250}, .colour = "#3232c8"}});
    session.activate(app.window(1));
    ASSERT_TRUE(eventually([&] { return mirror->activeWindow() == app.window(1); }));
    settle();
    const auto before = session.picture();
    const auto overlay = overlays->makeWindow(frame());
    overlay->commit(tree(frame()));
    overlay->orderBelow(app.window(1));
    EXPECT_TRUE(eventually([&] { return session.pixel(10, 590) != before.at(10, 590); }));
    settle();
    const auto clear = session.frameAreaOf(app.window(1));
    EXPECT_EQ(session.picture().firstDifference(before, clear), std::nullopt);
    EXPECT_LE(distanceFromLook(before, {0, 0, 200, 600}), 2);
    EXPECT_LE(distanceFromLook(before, {520, 0, 280, 600}), 2);
}

INSTANTIATE_TEST_SUITE_P(Painters, OverlayPictures,
                         testing::Values(Compositor::none, Compositor::picomXrender));

} // namespace
} // namespace lumo::x11
