#include "ScriptedDesktop.h"
#include "windows/OrdinaryWindow.h"
#include "windows/WindowListService.h"

#include <gmock/gmock.h>

#include <vector>

namespace lumo {
namespace {

using test::ScriptedDesktop;
using testing::ElementsAre;
using testing::IsEmpty;

WindowRecord completeRecord(std::uint32_t number) {
    return {.number = number,
            .ownerProcess = 100,
            .ownerName = "Editor",
            .layer = 0,
            .bounds = Rect{10, 20.5, 300, 200},
            .isOnScreen = true,
            .title = "Report"};
}

RunningApplication application(std::int32_t process) {
    RunningApplication application;
    application.processIdentifier = process;
    return application;
}

std::vector<std::uint32_t> numbers(const std::vector<WindowDescriptor> &windows) {
    std::vector<std::uint32_t> result;
    for (const auto &window : windows) {
        result.push_back(window.windowID);
    }
    return result;
}

class WindowListTest : public testing::Test {
  protected:
    ScriptedDesktop desktop;
    WindowListService service{desktop.platform().windowServer, desktop.platform().workspace};
};

TEST_F(WindowListTest, WindowsFrontToBackAsTheServerListsThem) {
    const auto editor = desktop.launch("Editor", "org.example.Editor");
    const auto helper = desktop.launch("Helper", std::nullopt);
    const auto back = desktop.openWindow(editor, {-5, 0, 640, 480}, "Report");
    const auto stray = desktop.openWindow(4242, {0, 0, 10, 10});
    const auto front = desktop.openWindow(helper, {0, 0, 20, 10}, "", 25);
    const auto second = desktop.openWindow(editor, {1, 2, 3, 4});

    const auto list = service.allVisibleWindows();
    const auto &windows = *list;
    EXPECT_THAT(numbers(windows), ElementsAre(front, second, stray, back));
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
    EXPECT_THAT(service.windowIDs(application(editor)), ElementsAre(second, back));
}

TEST_F(WindowListTest, IncompleteRecordsAreDroppedButCounted) {
    const auto answerWith = [this](WindowRecords records) {
        desktop.answerWindowListWith(std::make_shared<WindowRecords>(std::move(records)));
    };
    const std::vector<std::pair<const char *, void (*)(WindowRecord &)>> losses = {
        {"number", [](WindowRecord &record) { record.number.reset(); }},
        {"owner", [](WindowRecord &record) { record.ownerProcess.reset(); }},
        {"owner name", [](WindowRecord &record) { record.ownerName.reset(); }},
        {"layer", [](WindowRecord &record) { record.layer.reset(); }},
        {"bounds", [](WindowRecord &record) { record.bounds.reset(); }},
        {"on-screen flag", [](WindowRecord &record) { record.isOnScreen.reset(); }},
    };
    for (const auto &[what, lose] : losses) {
        auto record = completeRecord(2);
        lose(record);
        answerWith({completeRecord(1), record, completeRecord(3)});
        const auto windows = service.allVisibleWindows();
        ASSERT_EQ(windows->size(), 2U) << what;
        EXPECT_EQ(windows->at(1).zOrder, 2) << what;
    }
    auto nameless = completeRecord(5);
    nameless.ownerName.reset();
    answerWith({nameless});
    EXPECT_THAT(service.windowIDs(application(100)), ElementsAre(5)) << "the rest is not asked for";

    desktop.answerWindowListWith(nullptr);
    EXPECT_THAT(*service.allVisibleWindows(), IsEmpty());
    EXPECT_THAT(service.windowIDs(application(100)), IsEmpty());
}

TEST_F(WindowListTest, SameListWhileNothingChanges) {
    auto record = completeRecord(1);
    record.ownerProcess = desktop.launch("Terminal", std::nullopt) + 1;
    desktop.answerWindowListWith(std::make_shared<WindowRecords>(WindowRecords{record}));
    const auto first = service.allVisibleWindows();
    EXPECT_EQ(first->at(0).bundleID, std::nullopt);
    EXPECT_EQ(service.allVisibleWindows(), first);
    ASSERT_EQ(desktop.launch("Editor", "org.example.Editor"), first->at(0).ownerPID);
    EXPECT_EQ(service.allVisibleWindows()->at(0).bundleID, "org.example.Editor");
    EXPECT_EQ(first->at(0).bundleID, std::nullopt) << "a list never changes";
}

TEST_F(WindowListTest, OrdinaryWindowsAreVisibleAndInTheirLayer) {
    struct Case {
        const char *what;
        std::optional<std::int64_t> layer;
        double alpha;
        std::optional<Rect> bounds;
        bool isOrdinary;
    };
    const Rect bounds{0, 0, 80, 80};
    for (const auto &[what, layer, alpha, where, isOrdinary] : {
             Case{"complete", 0, 1, bounds, true},
             Case{"without a layer", {}, 1, bounds, true},
             Case{"in another layer", 3, 1, bounds, false},
             Case{"nearly transparent", 0, 0.01, bounds, true},
             Case{"transparent", 0, 0, bounds, false},
             Case{"without bounds", 0, 1, {}, false},
             Case{"too low", 0, 1, Rect{0, 0, 80, 79}, false},
         }) {
        const WindowRecord record{
            .ownerProcess = 7, .layer = layer, .bounds = where, .alpha = alpha};
        EXPECT_EQ(ownerOfOrdinaryWindow(record, 80).has_value(), isOrdinary) << what;
    }
    EXPECT_EQ(ownerOfOrdinaryWindow({.bounds = bounds}, 80), std::nullopt);
}

TEST_F(WindowListTest, SystemAndTransientWindowsByTheirWords) {
    for (const char *owner :
         {"Dock", "SystemUIServer", "Notification Center", "Control Center Extra",
          "my WINDOW SERVER", "UniversalAccessAuthWarn"}) {
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

TEST_F(WindowListTest, PrimaryContentIsLargeAndNotTransient) {
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
