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
    desktop.windows["{a}"] = {.identifier = 1, .desktops = {"one"}, .isComplete = true};
    desktop.windows["{b}"] = {
        .identifier = 2, .state = active, .desktops = {"one"}, .isComplete = true};
    desktop.windows["{c}"] = {.identifier = 3, .desktops = {"two"}, .isComplete = true};
    desktop.stacking = uuidsOf("{c};{b};{gone};{a};");
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
             desktop.windows["{b}"].state = minimized;
         }},
        {"Cb*a", [](auto &desktop) { desktop.currentDesktops = {"two"}; }},
        {"cB*AD",
         [](auto &desktop) { // announced before its place is
             desktop.windows["{d}"] = {.identifier = 4, .isComplete = true};
         }},
        {"cB*A", [](auto &desktop) { desktop.windows["{d}"] = {.identifier = 4}; }},
        {"CB*A^",
         [](auto &desktop) {
             desktop.windows["{a}"].state = keptAbove;
             desktop.windows["{c}"].state = onAllDesktops;
         }},
        {"cba", [](auto &desktop) { desktop.showsDesktop = true; }},
        {"cB*aD#",
         [](auto &desktop) {
             desktop.windows["{a}"].activities = {"work"};
             desktop.facts = *factsOf(R"({"activity":"home",
                 "docks":[{"x":0,"y":690,"width":1280,"height":30,"process":7}]})");
         }},
    };
    for (const auto &[expected, change] : cases) {
        auto desktop = threeWindows();
        change(desktop);
        EXPECT_EQ(drawn(stateOf(desktop)), expected);
    }
    auto withDialog = threeWindows();
    withDialog.windows["{a}"].parent = "{b}";
    EXPECT_EQ(stateOf(withDialog).find(1)->transientFor, 2);
    withDialog.windows.erase("{b}");
    EXPECT_EQ(stateOf(withDialog).find(1)->transientFor, std::nullopt);
}

TEST(KWin, ScriptMessages) {
    for (const auto *broken : {"", "{", "[]", "{}", R"({"activity":1,"docks":[]})",
                               R"({"activity":"","docks":[{"x":1}]})"}) {
        EXPECT_EQ(factsOf(broken), std::nullopt) << broken;
    }
    EXPECT_EQ(factsOf(R"({"activity":"home","docks":[]})"), (DesktopFacts{.activity = "home"}));
}

// Against Qt's own numbers.
TEST(KWin, KeysByQtsNumbers) {
    using namespace hotKeyModifier;
    struct Case {
        std::uint32_t symbol;
        std::uint32_t modifiers;
        std::optional<std::int32_t> key;
    };
    const std::vector<Case> cases = {
        {XKB_KEY_d, control | option | command, 0x1C000044},
        {XKB_KEY_Tab, command | option, 0x19000001},
        {XKB_KEY_space, control | shift, 0x06000020},
        {XKB_KEY_odiaeresis, 0, 0xD6},
        {XKB_KEY_Cyrillic_be, 0, 0x411},
        {XKB_KEY_F12, shift, 0x0300003B},
        {XKB_KEY_KP_5, control, 0x24000035},
        {XKB_KEY_NoSymbol, control, std::nullopt},
        {XKB_KEY_Shift_L, control, std::nullopt},
    };
    for (const auto &[symbol, modifiers, key] : cases) {
        EXPECT_EQ(qtKey(symbol, modifiers), key) << symbol;
    }
}

} // namespace
} // namespace lumo::wayland::kwin
