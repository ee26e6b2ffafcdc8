#include "platform/x11/windows/X11Workspace.h"

#include "MirroredDesktop.h"
#include "bus/RunUntil.h"
#include "bus/UserFolders.h"
#include "desktop/SampleApplication.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/server/ConnectionWatch.h"
#include "platform/x11/server/X11Screens.h"
#include "platform/x11/windows/X11Accessibility.h"
#include "platform/x11/windows/X11WindowServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::SampleApplication;
using desktop::WindowManager;
using testing::ElementsAre;

// A desktop with all that is read from it.
class WorkspaceTest : public testing::Test {
  protected:
    bool eventually(const std::function<bool()> &condition) { return runUntil(loop_, condition); }

    bool isFrontmost(const SampleApplication &application) const {
        const auto *frontmost = workspace_.frontmostApplication();
        return frontmost != nullptr &&
               frontmost->processIdentifier == application.processIdentifier();
    }

    // The titles of the list's windows, front to back, with their layers where these are not 0.
    std::vector<std::string> titles() const {
        std::vector<std::string> titles;
        for (const auto &record : *server_.onScreenWindows()) {
            if (record.title) {
                titles.push_back(*record.title +
                                 (record.layer == 0 ? "" : " " + std::to_string(*record.layer)));
            }
        }
        return titles;
    }

    MirroredDesktop mirrored_{{}};
    desktop::DesktopSession &session_ = mirrored_.session;
    freedesktop::GlibMainLoop loop_;
    Handle watch_ = x11::watch(loop_, *mirrored_.connection, [] {});
    X11Screens screens_{*mirrored_.connection, loop_};
    std::vector<std::string> lines_;
    Log log_{[this](std::string_view line) { lines_.emplace_back(line); }};
    X11Workspace workspace_{*mirrored_.connection, *mirrored_.mirror, log_};
    X11WindowServer server_{*mirrored_.mirror, screens_, workspace_};
    X11Accessibility accessibility_{*mirrored_.connection, *mirrored_.mirror};
};

TEST_F(WorkspaceTest, ApplicationsByTheirDesktopEntries) {
    freedesktop::writeDesktopEntry("org.example.Alpha",
                                   "Name=Alpha Editor\nExec=true\nStartupWMClass=Alpha\n");
    const SampleApplication alpha(mirrored_.desktop, "Alpha", {{}});
    const SampleApplication gamma(mirrored_.desktop, "Gamma", {{}});
    const SampleApplication panel(mirrored_.desktop, "Panel",
                                  {{.area = {0, 780, 1280, 20}, .type = "DOCK"}});
    ASSERT_TRUE(eventually([&] {
        const auto *known = workspace_.runningApplication(alpha.processIdentifier());
        return known != nullptr && known->localizedName == "Alpha Editor";
    }));
    mirrored_.catchUp();
    const auto check = [&](const SampleApplication &application, const char *identifier,
                           const char *name, ActivationPolicy policy) {
        const auto *found = workspace_.runningApplication(application.processIdentifier());
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(*found,
                  (RunningApplication{application.processIdentifier(), identifier, name, policy}));
        EXPECT_THAT(workspace_.runningApplications(), testing::Contains(*found));
    };
    check(alpha, "org.example.Alpha", "Alpha Editor", ActivationPolicy::regular);
    check(gamma, "Gamma", "Gamma", ActivationPolicy::regular);
    check(panel, "Panel", "Panel", ActivationPolicy::accessory);
    EXPECT_EQ(workspace_.runningApplication(1), nullptr);
    EXPECT_EQ(workspace_.ownApplication(),
              (RunningApplication{getpid(), "app.lumo.Lumo", "Lumo", ActivationPolicy::accessory}));

    const auto program = std::filesystem::read_symlink(
        "/proc/" + std::to_string(gamma.processIdentifier()) + "/exe");
    freedesktop::writeDesktopEntry("org.example.Sample",
                                   "Name=Sample\nExec=" + program.string() + " --new\n");
    EXPECT_TRUE(eventually([&] {
        return workspace_.runningApplication(gamma.processIdentifier())->localizedName == "Sample";
    })) << "a new entry, found by the name of its program";
    check(gamma, "org.example.Sample", "Sample", ActivationPolicy::regular);
    check(alpha, "org.example.Alpha", "Alpha Editor", ActivationPolicy::regular);
}

TEST_F(WorkspaceTest, FrontmostApplicationAndActivation) {
    const SampleApplication first(
        mirrored_.desktop, "First",
        {{.title = "One", .area = {0, 0, 400, 300}}, {.title = "Two", .area = {50, 50, 400, 300}}});
    SampleApplication second(mirrored_.desktop, "Second", {{.area = {100, 100, 400, 300}}});
    int activated = 0;
    int terminated = 0;
    int spaces = 0;
    const auto onActivated = workspace_.onDidActivateApplication([&] { ++activated; });
    const auto onTerminated = workspace_.onDidTerminateApplication([&] { ++terminated; });
    const auto onSpace = workspace_.onActiveSpaceDidChange([&] { ++spaces; });
    session_.activate(second.window());
    ASSERT_TRUE(eventually([&] { return isFrontmost(second); }));

    activated = 0;
    ASSERT_TRUE(workspace_.activate(first.processIdentifier(), HiddenApplication::show));
    EXPECT_TRUE(eventually([&] {
        return isFrontmost(first) && session_.isAbove(first.window(0), second.window()) &&
               session_.isAbove(first.window(1), first.window(0));
    }));
    EXPECT_GT(activated, 0);
    mirrored_.catchUp();
    const auto sent = mirrored_.connection->bytesSent();
    EXPECT_TRUE(workspace_.activate(first.processIdentifier(), HiddenApplication::show));
    EXPECT_EQ(mirrored_.connection->bytesSent(), sent) << "it is in front already";
    EXPECT_FALSE(workspace_.activate(1, HiddenApplication::show)) << "no application";

    activated = 0;
    session_.activate(first.window(0));
    EXPECT_TRUE(eventually([&] {
        return mirrored_.mirror->activeWindow() == first.window(0) && activated > 0;
    })) << "another window of the same one";
    session_.minimise(first.window(0));
    session_.minimise(first.window(1));
    EXPECT_TRUE(eventually([&] { return isFrontmost(second); }));
    EXPECT_FALSE(workspace_.activate(first.processIdentifier(), HiddenApplication::leave));
    EXPECT_TRUE(workspace_.activate(first.processIdentifier(), HiddenApplication::show));
    EXPECT_TRUE(eventually([&] { return isFrontmost(first); })) << "back from its icon";

    EXPECT_EQ(terminated, 0);
    second.kill();
    EXPECT_TRUE(eventually([&] { return terminated == 1; }));
    EXPECT_EQ(workspace_.runningApplication(second.processIdentifier()), nullptr);
    EXPECT_EQ(spaces, 0);
    session_.switchToDesktop(1);
    EXPECT_TRUE(
        eventually([&] { return spaces == 1 && workspace_.frontmostApplication() == nullptr; }));
    EXPECT_NE(workspace_.runningApplication(first.processIdentifier()), nullptr);
}

TEST_F(WorkspaceTest, WindowListFromFrontToBack) {
    SampleApplication application(
        mirrored_.desktop, "Sample",
        {
            {.title = "Wallpaper", .area = {0, 0, 1280, 800}, .type = "DESKTOP"},
            {.title = "Below", .state = "BELOW"},
            {.title = "Active", .area = {100, 120, 500, 400}},
            {.title = "Raised", .area = {200, 220, 500, 400}},
            {.title = "Iconified"},
            {.title = "Above", .state = "ABOVE"},
            {.title = "Dock", .area = {0, 780, 1280, 20}, .type = "DOCK"},
            {.title = "Menu", .type = "POPUP_MENU", .overrideRedirect = true},
        });
    session_.minimise(application.window(4));
    session_.activate(application.window(2));
    ASSERT_TRUE(
        eventually([&] { return mirrored_.mirror->activeWindow() == application.window(2); }));
    const auto raiseOtherWindow = [&] {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(session_.connection(), application.window(3),
                             XCB_CONFIG_WINDOW_STACK_MODE, &above);
        return session_.eventually([&] {
            return session_.isAbove(application.window(3), *mirrored_.mirror->activeWindow());
        });
    };
    ASSERT_TRUE(raiseOtherWindow());
    mirrored_.catchUp();
    // The active window first among its like, though another one is above it.
    EXPECT_THAT(titles(),
                ElementsAre("Menu 101", "Dock 20", "Above 3", "Active", "Raised", "Below -1"));

    const auto list = server_.onScreenWindows();
    EXPECT_EQ(list, server_.onScreenWindows());
    const auto frame = session_.frameAreaOf(application.window(2));
    const auto ownerName =
        workspace_.runningApplication(application.processIdentifier())->localizedName.value_or("");
    EXPECT_EQ(ownerName, "Sample");
    EXPECT_EQ(list->at(3), (WindowRecord{.number = application.window(2),
                                         .ownerProcess = application.processIdentifier(),
                                         .ownerName = ownerName,
                                         .layer = 0,
                                         .bounds = Rect{double(frame.x), double(frame.y),
                                                        double(frame.width), double(frame.height)},
                                         .isOnScreen = true,
                                         .title = "Active",
                                         .alpha = 1}));

    session_.move(application.window(2), 300, 310);
    EXPECT_TRUE(eventually([&] { return server_.onScreenWindows() != list; }));

    application.open(
        {.title = "Its dialog", .type = "DIALOG", .transientFor = application.window(2)});
    session_.activate(application.window(8));
    ASSERT_TRUE(
        eventually([&] { return mirrored_.mirror->activeWindow() == application.window(8); }));
    ASSERT_TRUE(raiseOtherWindow());
    const auto emptyFrame = application.open({.title = "Frame", .overrideRedirect = true});
    const std::uint32_t overrideRedirect = 0;
    xcb_change_window_attributes(session_.connection(), emptyFrame, XCB_CW_OVERRIDE_REDIRECT,
                                 &overrideRedirect);
    session_.move(emptyFrame, 20, 20);
    mirrored_.catchUp();
    EXPECT_TRUE(eventually([&] { return !mirrored_.window(emptyFrame).isOverrideRedirect; }));
    EXPECT_THAT(titles(), ElementsAre("Menu 101", "Dock 20", "Above 3", "Its dialog", "Active",
                                      "Raised", "Below -1"));
    session_.switchToDesktop(1);
    EXPECT_TRUE(eventually([&] { return titles() == std::vector<std::string>{"Menu 101"}; }))
        << "only what is on no desktop";
}

TEST(DesktopsTest, WindowKeptMappedOnAnotherDesktopIsNotOnScreen) {
    MirroredDesktop mirrored({.windowManager = WindowManager::kwinCompositing});
    const SampleApplication application(mirrored.desktop, "Sample", {{}, {}});
    const auto isShown = [&](std::size_t window) {
        return mirrored.mirror->isOnShownDesktop(mirrored.window(application.window(window)));
    };
    mirrored.catchUp();
    mirrored.session.sendToDesktop(application.window(0), 1);
    EXPECT_TRUE(mirrored.eventually([&] { return !isShown(0); }));
    EXPECT_TRUE(mirrored.session.isViewable(application.window(0)) && isShown(1));
}

TEST_F(WorkspaceTest, WindowsAreRaisedThroughTheWindowManager) {
    const SampleApplication application(mirrored_.desktop, "Sample",
                                        {{.area = {0, 0, 400, 300}}, {.area = {50, 50, 400, 300}}});
    mirrored_.catchUp();
    EXPECT_TRUE(accessibility_.isProcessTrusted());
    const auto windows = accessibility_.windows(application.processIdentifier());
    ASSERT_EQ(windows.size(), 2U);
    EXPECT_TRUE(windows[1]->raise());
    EXPECT_TRUE(
        eventually([&] { return session_.isAbove(application.window(0), application.window(1)); }));
    EXPECT_TRUE(accessibility_.windows(1).empty());

    int focusChanges = 0;
    const auto focus = accessibility_.onFocusedWindowDidChange([&] { ++focusChanges; });
    for (const std::size_t window : {0U, 1U}) { // the first may be active already
        session_.activate(application.window(window));
        EXPECT_TRUE(eventually(
            [&] { return mirrored_.mirror->activeWindow() == application.window(window); }));
    }
    EXPECT_TRUE(eventually([&] { return focusChanges > 0; })) << "within one application";

    MirroredDesktop bare({.windowManager = WindowManager::none});
    X11Accessibility accessibility(*bare.connection, *bare.mirror);
    EXPECT_FALSE(accessibility.isProcessTrusted());
    bool isTold = false;
    const auto trust = accessibility.onProcessTrustDidChange([&] { isTold = true; });
    const auto manager = bare.desktop.start({"openbox"});
    EXPECT_TRUE(bare.eventually([&] { return isTold && accessibility.isProcessTrusted(); }));
}

} // namespace
} // namespace lumo::x11
