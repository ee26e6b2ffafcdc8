#include "platform/HotKeyService.h"
#include "platform/wayland/kwin/PlasmaDesktop.h"
#include "platform/wayland/kwin/QtKeys.h"

#include <gmock/gmock.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumo::wayland::kwin {
namespace {

constexpr std::uint32_t active = 1;
constexpr std::uint32_t minimized = 2;
constexpr std::uint32_t keptAbove = 16;
constexpr std::uint32_t onAllDesktops = 64;

// Three windows on two virtual desktops, the first of which is shown.
PlasmaDesktop threeWindows() {
    PlasmaDesktop desktop;
    desktop.windows[1] = {.title = "A", .desktops = {"one"}, .isComplete = true};
    desktop.windows[2] = {.state = active, .desktops = {"one"}, .isComplete = true};
    desktop.windows[3] = {.desktops = {"two"}, .isComplete = true};
    desktop.stacking = {3, 2, 9, 1}; // one of which has gone
    desktop.currentDesktops = {"one"};
    return desktop;
}

// One letter for each window from the bottom to the top: upper case when it is shown, "*" after the
// focused one, "^" after one that is kept above, "#" after a dock.
std::string drawn(const DesktopState &state) {
    std::string text;
    for (const auto &window : state.windows) {
        const bool isDock = window.layer == DesktopWindow::Layer::dock;
        const bool isShown = window.presence == DesktopWindow::Presence::shown;
        text += isDock ? 'D' : static_cast<char>((isShown ? '@' : '`') + window.identifier);
        text += window.isFocused ? "*" : "";
        text += window.layer == DesktopWindow::Layer::above ? "^" : isDock ? "#" : "";
    }
    return text;
}

TEST(KWin, StackingPresenceAndLayers) {
    const std::vector<std::pair<std::string, std::function<void(PlasmaDesktop &)>>> cases = {
        {"cB*A", [](auto &) {}},
        {"CbA",
         [](auto &desktop) {
             desktop.currentDesktops = {"one", "two"};
             desktop.windows[2].state = minimized;
         }},
        {"Cb*a", [](auto &desktop) { desktop.currentDesktops = {"two"}; }},
        {"cB*AD",
         [](auto &desktop) { // announced before its place is
             desktop.windows[4] = {.isComplete = true};
         }},
        {"cB*A", [](auto &desktop) { desktop.windows[4] = {}; }},
        {"CB*A^",
         [](auto &desktop) {
             desktop.windows[1].state = keptAbove;
             desktop.windows[3].state = onAllDesktops;
         }},
        {"cba", [](auto &desktop) { desktop.showsDesktop = true; }},
        {"cB*aD#",
         [](auto &desktop) {
             desktop.facts = *factsOf(R"({"activity":"home",
                 "absentees":[{"process":0,"title":"A"},{"process":7,"title":""}],
                 "docks":[{"x":0,"y":690,"width":1280,"height":30,"process":7}]})");
         }},
    };
    for (const auto &[expected, change] : cases) {
        auto desktop = threeWindows();
        change(desktop);
        EXPECT_EQ(drawn(stateOf(desktop)), expected);
    }
    auto withDialog = threeWindows();
    withDialog.windows[1].parent = 2;
    EXPECT_EQ(stateOf(withDialog).find(1)->transientFor, 2);
    withDialog.windows.erase(2);
    EXPECT_EQ(stateOf(withDialog).find(1)->transientFor, std::nullopt);
}

TEST(KWin, ScriptMessages) {
    for (const auto *broken : {"", "{", "[]", "{}", R"({"activity":1,"docks":[],"absentees":[]})",
                               R"({"activity":"","docks":[{"x":1}],"absentees":[]})",
                               R"({"activity":"","docks":[],"absentees":[{"title":"A"}]})"}) {
        EXPECT_EQ(factsOf(broken), std::nullopt) << broken;
    }
    EXPECT_EQ(factsOf(R"({"activity":"home","docks":[],"absentees":[]})"),
              (DesktopFacts{.activity = "home"}));
}

// Against Qt's own numbers.
TEST(KWin, KeysByQtsNumbers) {
    using namespace hotKeyModifier;
    struct Case {
        std::uint32_t symbol;
        std::uint32_t shifted;
        std::uint32_t modifiers;
        std::vector<std::int32_t> keys;
    };
    const std::vector<Case> cases = {
        {XKB_KEY_d, XKB_KEY_D, control | option | command, {0x1C000044}},
        {XKB_KEY_d, XKB_KEY_D, control | shift, {0x06000044}},
        {XKB_KEY_Tab, XKB_KEY_ISO_Left_Tab, command | option | shift, {0x1B000001}},
        {XKB_KEY_space, XKB_KEY_space, control | shift, {0x06000020}},
        {XKB_KEY_1, XKB_KEY_exclam, control, {0x04000031}},
        {XKB_KEY_1, XKB_KEY_exclam, control | shift, {0x06000031, 0x04000021}},
        {XKB_KEY_odiaeresis, XKB_KEY_Odiaeresis, 0, {0xD6}},
        {XKB_KEY_Cyrillic_be, XKB_KEY_Cyrillic_BE, 0, {0x411}},
        {XKB_KEY_F12, XKB_KEY_F12, shift, {0x0300003B}},
        {XKB_KEY_KP_End, XKB_KEY_KP_1, control, {0x25000011, 0x05000011, 0x24000031, 0x04000031}},
        {XKB_KEY_NoSymbol, XKB_KEY_NoSymbol, control, {}},
        {XKB_KEY_Shift_L, XKB_KEY_NoSymbol, control, {}},
    };
    for (const auto &[symbol, shifted, modifiers, keys] : cases) {
        EXPECT_EQ(qtKeys(symbol, shifted, modifiers), keys) << symbol;
    }
}

} // namespace
} // namespace lumo::wayland::kwin
