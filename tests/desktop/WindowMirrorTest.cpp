#include "MirroredDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>
#include <xcb/shape.h>

#include <random>

namespace lumo::x11 {
namespace {

using desktop::DesktopOptions;
using desktop::SampleApplication;
using desktop::SampleWindow;
using desktop::WindowManager;

// A client that does whatever comes to its mind with windows of its own.
class RestlessClient {
  public:
    RestlessClient(desktop::DesktopSession &session, unsigned seed)
        : connection_(session.connection())
        , root_(session.root())
        , random_(seed) {}

    void act() {
        if (windows_.size() < 8) {
            create();
            return;
        }
        const auto window = any();
        switch (number(0, 11)) {
        case 0:
        case 1:
            create();
            break;
        case 2:
            xcb_destroy_window(connection_, window);
            std::erase(windows_, window);
            break;
        case 3:
            xcb_map_window(connection_, window);
            break;
        case 4:
            xcb_unmap_window(connection_, window);
            break;
        case 5:
            configure(window, XCB_CONFIG_WINDOW_STACK_MODE, {number(0, 4)});
            break;
        case 6:
            // Among others with a sibling that is not one, or is the window itself: an error.
            configure(window, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                      {any(), number(0, 4)});
            break;
        case 7:
            configure(
                window,
                XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                    XCB_CONFIG_WINDOW_HEIGHT | XCB_CONFIG_WINDOW_BORDER_WIDTH,
                {number(0, 900), number(0, 600), number(1, 400), number(1, 300), number(0, 5)});
            break;
        case 8:
            xcb_reparent_window(connection_, window, any(), 5, 5);
            break;
        case 9:
            xcb_reparent_window(connection_, window, root_, 30, 40);
            break;
        case 10:
            xcb_circulate_window(connection_, static_cast<std::uint8_t>(number(0, 1)), root_);
            break;
        default:
            setOverrideRedirect(window);
            break;
        }
    }

  private:
    std::uint32_t number(int from, int to) {
        return static_cast<std::uint32_t>(std::uniform_int_distribution<int>(from, to)(random_));
    }

    xcb_window_t any() { return windows_[number(0, static_cast<int>(windows_.size()) - 1)]; }

    void create() {
        const auto window = xcb_generate_id(connection_);
        const bool isInputOnly = number(0, 5) == 0;
        const std::uint32_t overrideRedirect = number(0, 1);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root_, 10, 20, 200, 100,
                          static_cast<std::uint16_t>(isInputOnly ? 0 : number(0, 3)),
                          isInputOnly ? XCB_WINDOW_CLASS_INPUT_ONLY : XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
        windows_.push_back(window);
    }

    void configure(xcb_window_t window, std::uint16_t mask, std::vector<std::uint32_t> values) {
        xcb_configure_window(connection_, window, mask, values.data());
    }

    void setOverrideRedirect(xcb_window_t window) {
        // Tells nobody by itself; a window manager must look when the window is mapped.
        xcb_unmap_window(connection_, window);
        const std::uint32_t on = number(0, 1);
        xcb_change_window_attributes(connection_, window, XCB_CW_OVERRIDE_REDIRECT, &on);
        xcb_map_window(connection_, window);
    }

    xcb_connection_t *connection_;
    xcb_window_t root_;
    std::mt19937 random_;
    std::vector<xcb_window_t> windows_;
};

TEST(WindowMirror, EqualsTheServersTreeWhateverHappens) {
    MirroredDesktop mirrored({.windowManager = WindowManager::none});
    for (unsigned seed = 1; seed <= 5; ++seed) {
        RestlessClient client(mirrored.session, seed);
        std::mt19937 random(seed);
        for (int i = 0; i < 1500; ++i) {
            client.act();
            if (random() % 40 == 0) {
                // Some of what happened is seen before more of it happens.
                xcb_flush(mirrored.session.connection());
                mirrored.connection->dispatch();
                mirrored.connection->flush();
            }
            if (i % 300 == 299) {
                mirrored.session.stacking(); // a round trip: all of it has happened
                mirrored.catchUp();
                ASSERT_EQ(differenceFromServer(*mirrored.connection, *mirrored.mirror), "")
                    << "seed " << seed << ", after " << i + 1 << " steps";
            }
        }
    }
    const WindowMirror late(*mirrored.connection);
    EXPECT_EQ(differenceFromServer(*mirrored.connection, late), "") << "one that starts now";
    EXPECT_GT(late.stacking().size(), 20U);
}

TEST(WindowMirror, AsksForNothingWhileNothingHappens) {
    MirroredDesktop mirrored({});
    const SampleApplication application(mirrored.desktop, "Sample", {{}, {.title = "Other"}});
    mirrored.catchUp();
    const auto before = mirrored.connection->bytesSent();
    std::size_t mapped = 0;
    for (int tick = 0; tick < 100; ++tick) {
        mirrored.connection->dispatch();
        mirrored.connection->flush();
        for (const auto window : mirrored.mirror->stacking()) {
            mapped += mirrored.mirror->find(window)->isMapped ? 1 : 0;
        }
    }
    EXPECT_EQ(mirrored.connection->bytesSent(), before);
    EXPECT_GE(mapped, 200U);
}

} // namespace
} // namespace lumo::x11
