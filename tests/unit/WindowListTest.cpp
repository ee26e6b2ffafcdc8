#include "ScriptedDesktop.h"
#include "windows/WindowListService.h"

#include <gmock/gmock.h>

#include <vector>

namespace lumo {
namespace {

using test::ScriptedDesktop;
using testing::ElementsAre;
using testing::IsEmpty;

Dictionary completeRecord(std::uint32_t number) {
    return {{windowKey::number, number},
            {windowKey::ownerPID, 100},
            {windowKey::ownerName, "Editor"},
            {windowKey::layer, 0},
            {windowKey::bounds, Dictionary{{boundsKey::x, 10},
                                           {boundsKey::y, 20.5},
                                           {boundsKey::width, 300},
                                           {boundsKey::height, 200}}},
            {windowKey::isOnscreen, true},
            {windowKey::name, "Report"}};
}

Dictionary recordWith(std::string_view key, Value value) {
    Dictionary record = completeRecord(1);
    record.set(key, std::move(value));
    return record;
}

Dictionary recordWithout(std::string_view key) {
    Dictionary record = completeRecord(1);
    record.erase(key);
    return record;
}

RunningApplication application(std::int32_t process) {
    RunningApplication application;
    application.processIdentifier = process;
    return application;
}

class WindowList : public testing::Test {
  protected:
    ScriptedDesktop desktop;
    WindowListService service{desktop.platform().windowServer, desktop.platform().workspace};
};

TEST_F(WindowList, DescribesTheWindowsFrontToBackAsTheServerListsThem) {
    const auto editor = desktop.launch("Editor", "org.example.Editor");
    const auto helper = desktop.launch("Helper", std::nullopt);
    const auto back = desktop.openWindow(editor, {-5, 0, 640, 480}, "Report");
    const auto stray = desktop.openWindow(4242, {0, 0, 10, 10});
    const auto front = desktop.openWindow(helper, {0, 0, 20, 10}, "", 25);
    const auto second = desktop.openWindow(editor, {1, 2, 3, 4});

    const auto windows = service.allVisibleWindows();
    ASSERT_EQ(windows.size(), 4U);
    EXPECT_EQ(windows[0].windowID, front);
    EXPECT_EQ(windows[0].layer, 25);
    EXPECT_EQ(windows[0].bundleID, std::nullopt);
    EXPECT_EQ(windows[0].name, "");
    EXPECT_EQ(windows[1].windowID, second);
    EXPECT_EQ(windows[1].name, std::nullopt);
    EXPECT_EQ(windows[2].windowID, stray);
    EXPECT_EQ(windows[2].bundleID, std::nullopt);
    EXPECT_EQ(windows[3], (WindowDescriptor{.id = back,
                                            .windowID = back,
                                            .ownerPID = editor,
                                            .ownerName = "Editor",
                                            .bundleID = "org.example.Editor",
                                            .zOrder = 3,
                                            .layer = 0,
                                            .bounds = {-5, 0, 640, 480},
                                            .area = 640 * 480,
                                            .isOnScreen = true,
                                            .name = "Report"}));
    EXPECT_EQ(desktop.applicationLookups, 3) << "one for each process, known or not";
    EXPECT_THAT(service.windowIDs(application(editor)), ElementsAre(second, back));
}

TEST_F(WindowList, DropsWhatIsNotDescribedWellEnoughAndCountsItAllTheSame) {
    const std::vector<std::pair<const char *, Dictionary>> bad = {
        {"no number", recordWithout(windowKey::number)},
        {"no owner name", recordWithout(windowKey::ownerName)},
        {"no layer", recordWithout(windowKey::layer)},
        {"no bounds", recordWithout(windowKey::bounds)},
        {"no on-screen flag", recordWithout(windowKey::isOnscreen)},
        {"a number too large", recordWith(windowKey::number, std::int64_t{1} << 32)},
        {"a process too large", recordWith(windowKey::ownerPID, std::int64_t{1} << 31)},
        {"a real layer", recordWith(windowKey::layer, 0.0)},
        {"bounds of another kind", recordWith(windowKey::bounds, "0 0 1 1")},
        {"a text among the bounds",
         recordWith(windowKey::bounds, Dictionary{{boundsKey::x, "10"}, {boundsKey::y, 20}})},
        {"a number as on-screen flag", recordWith(windowKey::isOnscreen, 1)},
    };
    for (const auto &[what, record] : bad) {
        desktop.answerWindowListWith(std::make_shared<WindowRecords>(
            WindowRecords{completeRecord(1), record, completeRecord(3)}));
        const auto windows = service.allVisibleWindows();
        ASSERT_EQ(windows.size(), 2U) << what;
        EXPECT_EQ(windows[1].zOrder, 2) << what;
    }

    desktop.applicationLookups = 0;
    desktop.answerWindowListWith(
        std::make_shared<WindowRecords>(WindowRecords{recordWithout(windowKey::ownerPID)}));
    EXPECT_THAT(service.allVisibleWindows(), IsEmpty());
    EXPECT_THAT(service.windowIDs(application(100)), IsEmpty());
    EXPECT_EQ(desktop.applicationLookups, 0);

    desktop.answerWindowListWith(nullptr);
    EXPECT_THAT(service.allVisibleWindows(), IsEmpty());
    EXPECT_THAT(service.windowIDs(application(100)), IsEmpty());
}

TEST_F(WindowList, ToleratesMissingSidesAndTitles) {
    const auto described = [](const Dictionary &record) {
        return WindowDescriptor::from(record, 0, std::nullopt).value();
    };
    const auto cornerOnly = described(
        recordWith(windowKey::bounds, Dictionary{{boundsKey::x, 10}, {boundsKey::y, 20}}));
    EXPECT_EQ(cornerOnly.bounds, (Rect{10, 20, 0, 0}));
    EXPECT_EQ(cornerOnly.area, 0);
    EXPECT_EQ(described(recordWith(windowKey::bounds, Dictionary{})).bounds, Rect{});
    const auto backwards = described(recordWith(
        windowKey::bounds, Dictionary{{boundsKey::x, 10}, {boundsKey::width, -4}, {"H", 1}}));
    EXPECT_EQ(backwards.bounds, (Rect{6, 0, 4, 0}));
    EXPECT_EQ(described(recordWith(windowKey::name, 7)).name, std::nullopt);
}

TEST_F(WindowList, TellsSystemAndTransientWindowsByTheirWords) {
    for (const char *owner : {"Dock", "SystemUIServer", "Control Center Extra", "my WINDOW SERVER",
                              "UniversalAccessAuthWarn"}) {
        EXPECT_TRUE(WindowListService::isSystemWindow(owner)) << owner;
    }
    for (const char *owner : {"dock", "Docker", "Editor", "Control  Center", "window serve", ""}) {
        EXPECT_FALSE(WindowListService::isSystemWindow(owner)) << owner;
    }
    for (const char *title : {"Quick Preview", "Finder", "MENU", "Tooltips", "a pOpOvEr",
                              "spreadsheet", "pan panel", "d\xC3\xA9j\xC3\xA0 dialog"}) {
        EXPECT_TRUE(WindowListService::isTransientWindow(title)) << title;
    }
    for (const char *title : {"", "Report", "men", "pan el", "d\u0130alog", "Utilit\xC3\xA9"}) {
        EXPECT_FALSE(WindowListService::isTransientWindow(title)) << title;
    }
}

TEST_F(WindowList, TakesLargeWindowsWithoutATransientTitleForThoseTheUserWorksIn) {
    struct Case {
        Size size;
        std::optional<std::string> title;
        bool isPrimary = false;
    };
    const std::vector<Case> cases = {
        {{300, 200}, "Report", true},        {{299, 200}, "Report", false},
        {{1000, 199}, std::nullopt, false},  {{1000, 800}, "", true},
        {{1000, 800}, "Save Dialog", false}, {{1000, 800}, std::nullopt, true},
    };
    for (const auto &[size, title, isPrimary] : cases) {
        WindowDescriptor window;
        window.bounds = {0, 0, size.width, size.height};
        window.name = title;
        EXPECT_EQ(WindowListService::isPrimaryContentWindow(window), isPrimary)
            << size.width << " x " << size.height << " " << title.value_or("untitled");
    }
}

} // namespace
} // namespace lumo
