#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>
#include <xcb/xfixes.h>

namespace lumo::x11 {
namespace {

using desktop::Area;
using desktop::Colour;
using desktop::Compositor;
using desktop::SampleApplication;

class OverlayPictures : public testing::TestWithParam<Compositor>, protected OverlayDesktop {
  protected:
    OverlayPictures()
        : OverlayDesktop({.width = 800, .height = 600, .compositor = GetParam()}) {
        const desktop::Picture wallpaper(800, 600, [](int x, int y) {
            return Colour{static_cast<std::uint8_t>(x / 4), static_cast<std::uint8_t>(y / 3), 90};
        });
        session.setWallpaper(wallpaper);
        EXPECT_TRUE(eventually([&] { return session.pixel(799, 599) == wallpaper.at(799, 599); }));
        session.activate(app_.window(1));
        EXPECT_TRUE(eventually([&] { return mirror->activeWindow() == app_.window(1); }));
        settle();
    }

    // The difference that is left when the look has had some time to show; a compositing manager
    // draws when it sees fit.
    std::string lastingDifference(const desktop::Picture &plain, const Area &area,
                                  const Rect &frame, const Look &look) {
        const Area on{static_cast<int>(frame.x), 600 - static_cast<int>(frame.maxY()),
                      static_cast<int>(frame.width), static_cast<int>(frame.height)};
        return session.wrongUntilNone([&] {
            settle();
            return difference(plain, session.picture(), area, on, look);
        });
    }

    bool comesToShow(const desktop::Picture &plain, const Area &area) {
        return eventually([&] { return session.picture().differenceFrom(plain, area).empty(); });
    }

    SampleApplication app_{desktop,
                           "Sample",
                           {{.title = "A", .area = {60, 60, 300, 250}, .colour = "#c83232"},
                            {.title = "B", .area = {210, 180, 300, 250}, .colour = "#32c832"},
                            {.title = "C", .area = {420, 300, 300, 250}, .colour = "#3232c8"}}};
};

TEST_P(OverlayPictures, MaskAndImagesFromTheBottomLeft) {
    const auto plain = session.picture();
    const auto overlay = overlays->makeWindow(frame());
    auto masked = tree(frame());
    masked.mask =
        EvenOddMask{masked.bounds, {masked.bounds, {20, 500, 100, 80}, {70, 460, 100, 80}}};
    overlay->commit(masked);
    overlay->orderBelow(app_.window(1));
    // In pixels from the top. What the two cut-outs have in common is covered again.
    for (const Area covered : {Area{70, 60, 50, 40}, Area{0, 0, 20, 600}, Area{20, 0, 180, 20}}) {
        EXPECT_EQ(lastingDifference(plain, covered, frame(), {}), "");
    }
    for (const Area cutOut : {Area{20, 20, 100, 40}, Area{20, 60, 50, 40}, Area{120, 60, 50, 80}}) {
        EXPECT_TRUE(comesToShow(plain, cutOut));
    }

    LayerTree stretched;
    stretched.bounds = {0, 0, 800, 600};
    Layer image;
    image.frame = {0, 200, 100, 400};
    image.magnificationFilter = Sampling::nearest;
    image.contents = std::make_shared<const Image>(
        Image{1, 2, {0xff, 0x20, 0x40, 0xff, 0x10, 0x30, 0x80, 0x80}});
    stretched.layers = {image};
    overlay->commit(stretched);
    EXPECT_TRUE(eventually([&] { return session.pixel(99, 199) == Colour::parse("#ff2040"); }));
    for (const int y : {200, 399}) {
        const auto below = plain.at(10, y);
        const Colour blended{static_cast<std::uint8_t>(0x10 + below.red / 2),
                             static_cast<std::uint8_t>(0x30 + below.green / 2),
                             static_cast<std::uint8_t>(0x80 + below.blue / 2)};
        EXPECT_LE(distance(session.pixel(10, y), blended), 2) << y;
    }
    EXPECT_EQ(session.pixel(10, 400).describe(), plain.at(10, 400).describe());
}

TEST_P(OverlayPictures, OnePicturePerDisplay) {
    const auto plain = session.picture();
    const Rect left{0, 0, 400, 600};
    const Rect right{400, 0, 400, 600};
    const auto leftOverlay = overlays->makeWindow(left);
    const auto rightOverlay = overlays->makeWindow(right);
    leftOverlay->commit(tree(left));
    rightOverlay->commit(tree(right, {.tintOpacity = 0.1}));
    leftOverlay->orderBelow(app_.window(1));
    rightOverlay->orderBelow(app_.window(2));
    const auto clearOnRight = session.frameAreaOf(app_.window(2));
    EXPECT_EQ(lastingDifference(plain, {0, 0, 200, 600}, left, {}), "");
    EXPECT_EQ(lastingDifference(plain, {400, 0, 400, 100}, right, {.tintOpacity = 0.1}), "");
    EXPECT_TRUE(comesToShow(plain, {520, clearOnRight.y, 150, 200}));

    // Resized while it shows.
    const Rect smaller{0, 100, 300, 500};
    leftOverlay->setFrame(smaller);
    leftOverlay->commit(tree(smaller));
    EXPECT_EQ(lastingDifference(plain, {0, 0, 200, 500}, smaller, {}), "");
    EXPECT_TRUE(comesToShow(plain, {0, 500, 400, 100}));
    EXPECT_TRUE(comesToShow(plain, {300, 0, 100, 100}));
}

TEST(OverlayWallpaper, FromEachSource) {
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

INSTANTIATE_TEST_SUITE_P(Painters, OverlayPictures,
                         testing::Values(Compositor::none, Compositor::picomXrender),
                         [](const auto &compositor) {
                             return compositor.param == Compositor::none ? "Flat" : "Translucent";
                         });

} // namespace
} // namespace lumo::x11
