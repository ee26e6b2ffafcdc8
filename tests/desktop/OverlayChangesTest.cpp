#include "OverlayDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>
#include <xcb/damage.h>

#include <utility>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::Area;
using desktop::Colour;
using desktop::Compositor;
using desktop::DesktopOptions;
using desktop::SampleApplication;

const DesktopOptions smallDesktop{.width = 800, .height = 600};

// Tells what of a window is drawn to, on a connection of its own.
class DrawingWatch {
  public:
    DrawingWatch(const std::string &displayName, std::int64_t window)
        : connection_(Connection::open(displayName.c_str())) {
        xcb_damage_create(*connection_, xcb_generate_id(*connection_),
                          static_cast<xcb_window_t>(window),
                          XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        takeBounds();
    }

    // What has been drawn to since the last call, as the smallest rectangle.
    drawing::PixelRect takeBounds() {
        connection_->wait(xcb_get_input_focus(*connection_), xcb_get_input_focus_reply);
        connection_->dispatch();
        return std::exchange(bounds_, {});
    }

  private:
    std::unique_ptr<Connection> connection_;
    drawing::PixelRect bounds_;
    Handle events_ = connection_->onEvent([this](const xcb_generic_event_t &event) {
        if ((event.response_type & 0x7f) ==
            connection_->extensions().damageFirstEvent + XCB_DAMAGE_NOTIFY) {
            const auto &area = reinterpret_cast<const xcb_damage_notify_event_t &>(event).area;
            bounds_ = bounds_.united({area.x, area.y, area.width, area.height});
        }
    });
};

class OverlayChanges : public testing::Test, protected OverlayDesktop {
  protected:
    OverlayChanges()
        : OverlayDesktop(smallDesktop) {
        overlay_ = overlays->makeWindow(frame());
        overlay_->commit(tree(frame()));
    }

    // The wish for a clear window that the person stays with.
    std::function<void()> below(xcb_window_t window) {
        return [this, window] {
            if (mirror->activeWindow() != window) {
                session.activate(window);
            }
            overlay_->orderBelow(window);
        };
    }

    std::function<void()> inFront() {
        return [this] { overlay_->orderFront(); };
    }

    std::unique_ptr<PlatformWindow> overlay_;
};

TEST_F(OverlayChanges, OnlyChangesBeneathAreDrawn) {
    SampleApplication app(desktop, "Sample",
                          {{.area = {20, 60, 200, 150}, .colour = "#c83232"},
                           {.area = {450, 60, 200, 150}, .colour = "#32c832"},
                           {.area = {120, 250, 200, 150}, .colour = "#3232c8"}});
    // Beneath at first, clear then: it is no longer followed.
    const Area covered{0, 0, 440, 600};
    EXPECT_EQ(lastingDifference(*overlay_, {460, 0, 340, 600}, below(app.window(2))), "");
    EXPECT_EQ(lastingDifference(*overlay_, covered, below(app.window(1))), "");
    DrawingWatch drawing(desktop.displayName(), overlay_->windowNumber());
    const auto shows = [&](int x, int y, const std::string &colour) {
        const auto plain = Colour::parse(colour);
        const auto shown = session.pixel(x, y);
        // Only the grain is unknown.
        return std::abs(shown.red - (plain.red * 0.81 + 24) * 0.64) < 14 &&
               std::abs(shown.green - (plain.green * 0.81 + 24) * 0.64) < 14 &&
               std::abs(shown.blue - (plain.blue * 0.81 + 24) * 0.64) < 14;
    };

    app.setColour(0, "#e0e0e0");
    EXPECT_TRUE(eventually([&] { return shows(100, 150, "#e0e0e0"); }));
    settle();
    const auto drawn = drawing.takeBounds();
    const auto at = session.frameAreaOf(app.window(0));
    EXPECT_EQ(drawn.intersection({at.x, at.y, at.width, at.height}), drawn);
    EXPECT_FALSE(drawn.isEmpty());
    EXPECT_EQ(lastingDifference(*overlay_, covered, below(app.window(1))), "");

    // The clear window changes as fast as it can: nothing is asked for, nothing is drawn.
    settle();
    drawing.takeBounds();
    app.animate(1, true);
    std::uint64_t bytes = 0;
    int frames = 0;
    auto last = session.pixel(550, 150);
    EXPECT_TRUE(eventually([&] {
        bytes += bytesOfTurn();
        frames += std::exchange(last, session.pixel(550, 150)) == last ? 0 : 1;
        return frames >= 10;
    }));
    EXPECT_EQ(bytes, 0);
    EXPECT_EQ(drawing.takeBounds(), drawing::PixelRect{});
    app.animate(1, false);
}

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
        session.setWallpaper(wallpaper);
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
