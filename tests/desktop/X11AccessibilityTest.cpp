#include "platform/x11/windows/X11Accessibility.h"

#include "MirroredDesktop.h"
#include "desktop/SampleApplication.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace lumo::x11 {
namespace {

using desktop::SampleApplication;
using desktop::WindowManager;

TEST(AccessibilityTest, TrustFollowsTheWindowManager) {
    MirroredDesktop mirrored({.windowManager = WindowManager::none});
    X11Accessibility accessibility(*mirrored.connection, *mirrored.mirror);
    std::vector<bool> trust;
    const auto trustChanges = accessibility.onProcessTrustDidChange(
        [&] { trust.push_back(accessibility.isProcessTrusted()); });
    int focusChanges = 0;
    const auto focus = accessibility.onFocusedWindowDidChange([&] { ++focusChanges; });
    EXPECT_FALSE(accessibility.isProcessTrusted());
    for (int round = 0; round < 2; ++round) {
        const auto manager = mirrored.desktop.start({"openbox"});
        EXPECT_TRUE(mirrored.eventually([&] { return accessibility.isProcessTrusted(); }));
        ASSERT_TRUE(mirrored.session.eventually(
            [&] { return mirrored.session.windowManagerTakesWindows(); }));
        SampleApplication sample(mirrored.desktop, "Sample", {{.title = "A"}, {.title = "B"}});
        for (const std::size_t window : {0U, 1U}) {
            mirrored.session.activate(sample.window(window));
            ASSERT_TRUE(mirrored.eventually(
                [&] { return mirrored.mirror->activeWindow() == sample.window(window); }));
            const int before = focusChanges;
            mirrored.session.activate(sample.window(1 - window));
            EXPECT_TRUE(mirrored.eventually([&] { return focusChanges > before; }))
                << "another window of the same application";
        }
        manager->kill();
        EXPECT_TRUE(mirrored.eventually([&] { return !accessibility.isProcessTrusted(); }));
    }
    EXPECT_THAT(trust, testing::ElementsAre(true, false, true, false));
}

} // namespace
} // namespace lumo::x11
