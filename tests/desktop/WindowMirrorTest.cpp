#include "MirroredDesktop.h"
#include "desktop/SampleApplication.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <utility>

namespace lumo::x11 {
namespace {

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

TEST(WindowMirror, RandomChangesLeaveTheServersTree) {
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

// The property that names the manager's window may outlive both.
TEST(WindowMirror, ManagersAreBelievedOnlyWhenTheirWindowConfirmsThem) {
    MirroredDesktop mirrored({.windowManager = WindowManager::none});
    auto &session = mirrored.session;
    SampleApplication application(mirrored.desktop, "Sample", {{}, {}});
    const auto living = application.window(0);
    const auto dead = application.window(1);
    session.setText(living, "_NET_WM_NAME", "UTF8_STRING", "Openbox");
    const auto nameWith = [&](xcb_window_t named, xcb_window_t confirmed) {
        session.setNumbers(living, "_NET_SUPPORTING_WM_CHECK", {confirmed});
        session.setNumbers(session.root(), "_NET_SUPPORTING_WM_CHECK", {named});
        mirrored.catchUp();
        return mirrored.mirror->windowManagerName();
    };
    EXPECT_EQ(nameWith(living, XCB_NONE), "") << "a window that stands for no manager";
    EXPECT_EQ(nameWith(living, dead), "");
    application.closeWindow(1);
    EXPECT_EQ(nameWith(dead, living), "") << "a window that is gone";
    EXPECT_EQ(nameWith(living, living), "Openbox");
}

// The borders that some managers make wider than what they draw are no part of what is seen.
TEST(WindowMirror, KeyboardSaysWhichWindowIsActiveWhereTheManagerDoesNot) {
    MirroredDesktop x({.windowManager = WindowManager::none});
    SampleApplication app(x.desktop, "App",
                          {{.area = {0, 0, 200, 200}}, {.area = {300, 0, 200, 200}}});
    auto *manager = x.session.connection();
    const auto focus = [&](xcb_window_t window) {
        xcb_set_input_focus(manager, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        xcb_flush(manager);
    };
    focus(app.window(0));
    x.catchUp();
    EXPECT_EQ(x.mirror->activeWindow(), std::nullopt) << "no manager runs";
    const std::uint32_t redirect = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
    xcb_change_window_attributes(manager, x.session.root(), XCB_CW_EVENT_MASK, &redirect);
    const auto isActive = [&](std::size_t index) {
        return x.eventually([&] { return x.mirror->activeWindow() == app.window(index); });
    };
    focus(app.window(1));
    EXPECT_TRUE(isActive(1));
    const auto inside = xcb_generate_id(manager);
    xcb_create_window(manager, XCB_COPY_FROM_PARENT, inside, app.window(0), 0, 0, 5, 5, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(manager, inside);
    focus(inside);
    EXPECT_TRUE(isActive(0));
    x.session.movePointerTo(400, 100);
    focus(XCB_INPUT_FOCUS_POINTER_ROOT);
    EXPECT_TRUE(isActive(1));
    x.session.movePointerTo(100, 100);
    EXPECT_TRUE(isActive(0));
    x.session.movePointerTo(250, 100);
    x.catchUp();
    EXPECT_TRUE(isActive(0)) << "as long as nothing has the keyboard";
}

TEST(WindowMirror, VisiblePartOfAFrame) {
    MirroredDesktop mirrored({.windowManager = WindowManager::mutter});
    auto &session = mirrored.session;
    const SampleApplication application(mirrored.desktop, "Sample", {{}});
    const auto client = application.window();
    mirrored.catchUp();
    for (const int width : {400, 330, 500}) {
        session.resize(client, width, 300);
        const bool isRight = mirrored.eventually([&] {
            const auto area = session.areaOf(client);
            const auto borders = session.numbers(client, "_NET_FRAME_EXTENTS");
            return area.width == width && borders.size() == 4 &&
                   mirrored.window(client).visibleArea() ==
                       drawing::PixelRect{area.x - static_cast<int>(borders[0]),
                                          area.y - static_cast<int>(borders[2]),
                                          area.width + static_cast<int>(borders[0] + borders[1]),
                                          area.height + static_cast<int>(borders[2] + borders[3])};
        });
        EXPECT_TRUE(isRight) << "at " << width;
    }
}

TEST(WindowMirror, StartedLaterItDescribesTheSame) {
    MirroredDesktop mirrored({});
    auto &session = mirrored.session;
    const std::vector<SampleWindow> windows = {
        {.title = "Plain"},
        {.title = "Desktop", .type = "DESKTOP"},
        {.title = "Kept above", .state = "ABOVE"},
        {.title = "Notification", .type = "NOTIFICATION"},
        {.title = "Menu", .type = "POPUP_MENU", .overrideRedirect = true},
    };
    const SampleApplication application(mirrored.desktop, "Sample", windows);
    const auto check = [&] {
        const WindowMirror late(*mirrored.connection);
        for (std::size_t i = 0; i < windows.size(); ++i) {
            SCOPED_TRACE(windows[i].title);
            const auto client = application.window(i);
            const auto *window = late.find(client);
            ASSERT_NE(window, nullptr);
            EXPECT_EQ(*window, mirrored.window(client));
            EXPECT_EQ(window, late.find(session.frameOf(client)));
            EXPECT_EQ(window->client, client);
            EXPECT_EQ(window->isManaged, !windows[i].overrideRedirect);
        }
        EXPECT_EQ(late.windowManagerName(), "Openbox");
        EXPECT_TRUE(late.windowManagerSupports(session.atom("_NET_ACTIVE_WINDOW")));
    };
    mirrored.catchUp();
    {
        SCOPED_TRACE("found at start by the manager's list");
        check();
    }
    const auto list = session.atom("_NET_CLIENT_LIST");
    {
        SCOPED_TRACE("found at start though the list lacks it");
        const auto listed = application.window(1);
        xcb_change_property(session.connection(), XCB_PROP_MODE_REPLACE, session.root(), list,
                            XCB_ATOM_WINDOW, 32, 1, &listed);
        mirrored.catchUp();
        check();
    }
    xcb_delete_property(session.connection(), session.root(), list);
    mirrored.catchUp();
    SCOPED_TRACE("found at start by the manager's marks");
    check();
}

TEST(WindowMirror, TitlesOwnersOpacityShadowsAndWallpaper) {
    MirroredDesktop mirrored({});
    auto &session = mirrored.session;
    const SampleApplication application(mirrored.desktop, "Sample", {{}, {.title = "Other"}});
    const auto client = application.window();
    mirrored.catchUp();
    const auto &window = mirrored.window(client);

    session.setText(client, "_NET_WM_NAME", "UTF8_STRING", "Zürich");
    session.setNumbers(client, "_NET_WM_PID", {1});
    session.setNumbers(window.frame, "_NET_WM_WINDOW_OPACITY", {0x80000000});
    mirrored.catchUp();
    EXPECT_EQ(window.title, "Zürich");
    EXPECT_EQ(window.processIdentifier, application.processIdentifier())
        << "the connection's owner, whatever the window claims";
    EXPECT_NEAR(window.opacity, 0.5, 1e-6);

    xcb_delete_property(session.connection(), client, session.atom("_NET_WM_NAME"));
    session.setText(client, "WM_NAME", "STRING", "Other name");
    mirrored.catchUp();
    EXPECT_EQ(window.title, "Other name");

    const auto geometry = window.geometry;
    session.setNumbers(client, "_GTK_FRAME_EXTENTS", {10, 20, 30, 40});
    mirrored.catchUp();
    EXPECT_EQ(window.geometry, geometry);
    EXPECT_EQ(window.visibleArea(),
              (drawing::PixelRect{geometry.x + 10, geometry.y + 30, geometry.width - 30,
                                  geometry.height - 70}));

    MirrorChange seen;
    const auto subscription = mirrored.mirror->onChange([&](const MirrorChange &change) {
        seen.currentDesktop |= change.currentDesktop;
        seen.wallpaper |= change.wallpaper;
    });
    session.setNumbers(session.root(), "_XROOTPMAP_ID", {1});
    mirrored.catchUp();
    EXPECT_EQ(seen, MirrorChange{.wallpaper = true});
}

TEST(WindowMirror, StatedOwnerWhereTheServerDoesNotTell) {
    MirroredDesktop mirrored({.serverArguments = {"-extension", "X-Resource"}});
    const SampleApplication application(mirrored.desktop, "Sample", {{}});
    mirrored.catchUp();
    const auto &window = mirrored.window(application.window());
    EXPECT_EQ(window.processIdentifier, application.processIdentifier());
    mirrored.session.setNumbers(window.client, "_NET_WM_PID", {4711});
    mirrored.catchUp();
    EXPECT_EQ(window.processIdentifier, 4711);
    mirrored.session.setNumbers(window.client, "_NET_WM_PID",
                                {static_cast<std::uint32_t>(getpid())});
    mirrored.catchUp();
    EXPECT_LT(window.processIdentifier, 0) << "any window may claim to be this program's";
    mirrored.mirror->setInterfaceWindow(window.client);
    EXPECT_EQ(window.processIdentifier, getpid());
}

} // namespace
} // namespace lumo::x11
