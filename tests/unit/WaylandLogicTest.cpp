#include "platform/wayland/client/WaylandScreens.h"
#include "platform/wayland/overlay/OverlayCutOuts.h"
#include "platform/wayland/sway/SwayBindings.h"
#include "platform/wayland/sway/SwayMessages.h"
#include "platform/wayland/sway/SwayTree.h"
#include "platform/wayland/windows/AskingPace.h"
#include "platform/wayland/windows/DesktopState.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace lumo::wayland {
namespace {

using drawing::PixelRect;
using testing::ElementsAre;

TEST(SwayMessages, ArriveInPieces) {
    const auto bytes = sway::encoded(sway::MessageType::getTree, "{}") +
                       sway::encoded(sway::MessageType::windowEvent, std::string(70000, 'x'));
    sway::MessageReader reader;
    std::vector<std::pair<sway::MessageType, std::size_t>> messages;
    for (std::size_t at = 0; at < bytes.size(); at += 7) {
        reader.add(std::string_view(bytes).substr(at, 7));
        while (const auto message = reader.next()) {
            messages.emplace_back(message->type, message->body.size());
        }
    }
    EXPECT_THAT(messages, ElementsAre(std::pair(sway::MessageType::getTree, 2),
                                      std::pair(sway::MessageType::windowEvent, 70000)));
    reader.add("this is no message of sway's");
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.isBroken());
}

std::string rect(int x, int y, int width, int height) {
    return R"({"x":)" + std::to_string(x) + R"(,"y":)" + std::to_string(y) + R"(,"width":)" +
           std::to_string(width) + R"(,"height":)" + std::to_string(height) + "}";
}

std::string window(int id, const std::string &type, const std::string &area, int title,
                   const std::string &more) {
    return R"({"id":)" + std::to_string(id) + R"(,"type":")" + type + R"(","name":"w","rect":)" +
           area + R"(,"deco_rect":)" + rect(0, 0, 10, title) +
           R"(,"nodes":[],"floating_nodes":[],"pid":7,)" + more + "}";
}

std::string treeOf(const std::string &layout, const std::string &tiled,
                   const std::string &floating) {
    return R"({"nodes":[{"type":"output","name":"A","current_workspace":"1","nodes":[
        {"type":"workspace","name":"1","layout":")" +
           layout + R"(","rect":)" + rect(0, 20, 800, 580) + R"(,"nodes":[)" + tiled +
           R"(],"floating_nodes":[)" + floating + R"(]}],"floating_nodes":[]}]})";
}

TEST(SwayTree, WindowsFromTheBottomToTheTop) {
    const auto state = sway::desktopOf(
        treeOf("splith",
               window(5, "con", rect(0, 44, 400, 556), 24,
                      R"("app_id":"tiled","focused":false,"visible":true,"fullscreen_mode":0)"),
               window(6, "floating_con", rect(50, 60, 100, 90), 0,
                      R"("app_id":null,"focused":true,"visible":true,"window":900,
                  "window_properties":{"class":"Old","transient_for":null})") +
                   "," +
                   window(8, "floating_con", rect(70, 80, 10, 10), 0,
                          R"("app_id":null,"visible":false,"window":901,
                      "window_properties":{"class":"Old","transient_for":900})")));
    ASSERT_TRUE(state);
    using enum DesktopWindow::Presence;
    EXPECT_THAT(state->windows, ElementsAre(DesktopWindow{.identifier = 5,
                                                          .application = "tiled",
                                                          .title = "w",
                                                          .process = 7,
                                                          .frame = {0, 20, 400, 580}},
                                            DesktopWindow{.identifier = 6,
                                                          .application = "Old",
                                                          .title = "w",
                                                          .process = 7,
                                                          .frame = {50, 60, 100, 90},
                                                          .isFocused = true,
                                                          .isMovable = true,
                                                          .isXwayland = true},
                                            DesktopWindow{.identifier = 8,
                                                          .application = "Old",
                                                          .title = "w",
                                                          .process = 7,
                                                          .frame = {70, 80, 10, 10},
                                                          .presence = elsewhere,
                                                          .isMovable = true,
                                                          .isXwayland = true,
                                                          .transientFor = 6}));
    EXPECT_EQ(state->usableAreas.at("A"), (PixelRect{0, 20, 800, 580}));
    EXPECT_EQ(sway::movableOf(*state), AskingPace::Movable::windows);
    EXPECT_FALSE(sway::desktopOf("{"));
    EXPECT_FALSE(sway::desktopOf(R"({"nodes":[{"nodes":[{"type":"workspace"}]}]})"));
}

TEST(AskingPace, AsOftenAsSomethingCanMove) {
    struct Row {
        bool isInputActive = false;
        AskingPace::Movable movable = {};
        double sinceMotion = 0;
        std::optional<double> interval;
        double answer = 0;
    };
    using enum AskingPace::Movable;
    for (const auto &row :
         {Row{true, windows, 0.1, 1.0 / 60}, Row{false, nothing, 0.4, 1.0 / 60},
          Row{true, windows, 0.6, 0.1}, Row{true, tiledEdges, 9, 0.1},
          Row{true, nothing, 9, std::nullopt}, Row{false, windows, 9, 1.0},
          Row{false, tiledEdges, 9, std::nullopt}, Row{true, windows, 0.1, 0.06, 0.015},
          Row{true, windows, 9, 0.15, 0.015}, Row{false, windows, 9, 1.5, 0.015},
          Row{false, windows, 9, 4.0, 3}}) {
        AskingPace pace;
        pace.noteInput(row.isInputActive);
        pace.noteMovable(row.movable);
        pace.noteMotion(100);
        pace.noteAnswer(row.answer);
        const auto interval = pace.interval(100 + row.sinceMotion);
        EXPECT_EQ(interval.has_value(), row.interval.has_value()) << row.sinceMotion;
        EXPECT_DOUBLE_EQ(interval.value_or(0), row.interval.value_or(0)) << row.answer;
    }
}

TEST(Output, ScaleInOneHundredAndTwentieths) {
    EXPECT_EQ(scaleOf({0, 0, 1280, 720}, 1920, 1080, false), 1.5);
    EXPECT_EQ(scaleOf({0, 0, 1093, 614}, 1366, 768, false), 1.25);
    EXPECT_EQ(scaleOf({0, 0, 540, 960}, 1920, 1080, true), 2);
    EXPECT_EQ(scaleOf({0, 0, 800, 600}, 0, 0, false), 1);
}

TEST(OverlayCutOuts, PixelsOfTheDisplay) {
    DesktopState state;
    state.windows = {{.identifier = 1, .process = 7, .frame = {900, 10, 101, 51}},
                     {.identifier = 2, .process = 7, .frame = {0, 0, 500, 500}},
                     {.identifier = 3, .process = 9, .frame = {990, 20, 40, 40}},
                     {.identifier = 4, .process = 9, .frame = {1100, 20, 40, 40}}};
    const PixelRect usable = {800, 0, 600, 380};
    const Output output{.name = "B", .area = {800, 0, 600, 400}, .scale = 1.5};
    const Order below{.kind = Order::Kind::below, .reference = 1};
    const auto cutOuts = overlayCutOuts(state, output, usable, below, false, {1}, {});
    EXPECT_THAT(cutOuts.clearWindows, ElementsAre(3, 1));
    EXPECT_EQ(cutOuts.region, (drawing::Region(PixelRect{150, 15, 152, 77}) |
                               drawing::Region(PixelRect{285, 30, 60, 60}) |
                               drawing::Region(PixelRect{0, 570, 900, 30})));
    state.windows.erase(state.windows.begin());
    EXPECT_THAT(overlayCutOuts(state, output, usable, below, false, {1}, {3}).clearWindows,
                ElementsAre(3))
        << "until another order comes";
    const Order front{.kind = Order::Kind::front};
    EXPECT_THAT(overlayCutOuts(state, output, usable, front, false, {9}, {}).clearWindows,
                ElementsAre(4, 3))
        << "own windows";
    state.windows = {
        {.identifier = 3, .title = "Round", .process = 9, .frame = {900, 100, 20, 20}}};
    const auto rounded =
        overlayCutOuts(state, output, output.area, front, false, {9, "Round", 2}, {}).region;
    // Rows and columns of a corner of 3 pixels, of which the first lies 1 pixel in.
    EXPECT_EQ(rounded, drawing::Region(PixelRect{150, 151, 30, 28}) |
                           drawing::Region(PixelRect{151, 150, 28, 30}));
}

TEST(PanelAreas, ApartFromGaps) {
    const PixelRect all = {100, 0, 1000, 700};
    struct Row {
        PixelRect inGaps;
        int width = 0;
        int height = 0;
        PixelRect expected;
    };
    for (const auto &row : {Row{{120, 50, 960, 630}, 1000, 670, {100, 30, 1000, 670}},
                            Row{{120, 20, 960, 630}, 1000, 670, {100, 0, 1000, 670}},
                            Row{{170, 20, 910, 660}, 950, 700, {150, 0, 950, 700}},
                            Row{{110, 10, 980, 680}, 1000, 700, all}, Row{all, 1000, 700, all}}) {
        EXPECT_EQ(withoutGaps(all, row.inGaps, row.width, row.height), row.expected);
    }
}

TEST(SwayBindings, OfTheUsersConfiguration) {
    const auto bindings = sway::bindingsOf("set $mod Mod4\n"
                                           "set $alt Mod1\n"
                                           "bindsym --to-code {\n  Control+space exec menu\n}\n"
                                           "bindsym $mod+$alt+Tab focus next\n"
                                           "# bindsym Mod4+x nop\n"
                                           "bindcode --release Ctrl+Shift+65 exec a \\\n  b\n"
                                           "mode resize {\n  bindsym Mod4+r mode default\n}\n"
                                           "bindsym button2 kill\n");
    EXPECT_THAT(bindings, ElementsAre(sway::Binding{"default", {"Control"}, "space", false},
                                      sway::Binding{"default", {"Mod1", "Mod4"}, "Tab", false},
                                      sway::Binding{"default", {"Control", "Shift"}, "65", true},
                                      sway::Binding{"resize", {"Mod4"}, "r", false},
                                      sway::Binding{"default", {}, "button2", false}));
}

} // namespace
} // namespace lumo::wayland
