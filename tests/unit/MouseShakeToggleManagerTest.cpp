#include "input/MouseShakeToggleManager.h"

#include "ScriptedDesktop.h"
#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <optional>
#include <utility>
#include <vector>

namespace lumo {
namespace {

using test::ScriptedDesktop;
using testing::ElementsAre;
using testing::IsEmpty;
using enum MouseShakeToggleManager::Action;

class MouseShakeTest : public testing::Test {
  protected:
    MouseShakeTest() {
        manager.onShakeAction = [this](auto action) { reported.push_back(action); };
    }

    void move(double dx, std::uint32_t flags = 0) { desktop.movePointer(dx, flags); }

    // Four quick strokes, with these flags at the last of them.
    std::vector<MouseShakeToggleManager::Action> shake(std::uint32_t flags = 0) {
        reported.clear();
        desktop.advance(2);
        for (const double dx : {95, -95, 95}) {
            move(dx);
            desktop.advance(0.1);
        }
        move(-95, flags);
        return reported;
    }

    ScriptedDesktop desktop;
    Platform platform = desktop.platform();
    SettingsStore settings{platform};
    MouseShakeToggleManager manager{platform, settings};
    std::vector<MouseShakeToggleManager::Action> reported;
};

struct Movement {
    double pause; // seconds before it
    double dx;
};

struct Gesture {
    const char *name;
    std::vector<Movement> movements;
    std::size_t shakes;
};

TEST_F(MouseShakeTest, FourAlternatingStrokesInTime) {
    const std::vector<Gesture> cases = {
        {"four strokes", {{0, 95}, {0.3, -95}, {0.3, 95}, {0.3, -95}}, 1},
        {"three strokes", {{0, 95}, {0.3, -95}, {0.3, 95}}, 0},
        {"a stroke too short", {{0, 95}, {0.3, -89.9}, {0.3, 95}, {0.3, -95}}, 0},
        {"a stroke in parts", {{0, 95}, {0.1, -45}, {0.1, -45}, {0.1, 95}, {0.3, -95}}, 1},
        {"a part that turns back", {{0, 95}, {0.1, -50}, {0.1, 20}, {0.1, -59}, {0.02, 95}}, 0},
        {"the same direction twice", {{0, 95}, {0.2, 95}, {0.2, -95}, {0.2, 95}, {0.2, -95}}, 1},
        {"a pause too long", {{0, 95}, {0.2, -95}, {0.35, 95}, {0.2, -95}}, 0},
        {"four strokes after the pause",
         {{0, 95}, {0.35, -95}, {0.2, 95}, {0.2, -95}, {0.2, 95}},
         1},
        {"the pause ends the sum as well",
         {{0, 95}, {0.1, -80}, {0.35, -20}, {0.1, 100}, {0.1, -95}, {0.1, 95}},
         0},
        {"strokes that keep it alive, in all too long",
         {{0, 95}, {0.3, 95}, {0.3, 95}, {0.3, -95}, {0.2, 95}, {0.1, -95}},
         0},
        {"trembling", {{0, 0.99}, {0, -0.99}, {0, 95}, {0.3, -95}, {0.3, 95}, {0.3, 0.5}}, 0},
    };
    for (const auto &[name, movements, shakes] : cases) {
        SCOPED_TRACE(name);
        settings.mouseShakeToggleEnabled.set(false);
        settings.mouseShakeToggleEnabled.set(true);
        desktop.advance(2);
        reported.clear();
        for (const auto &[pause, dx] : movements) {
            desktop.advance(pause);
            move(dx);
        }
        EXPECT_EQ(reported.size(), shakes);
    }
}

TEST_F(MouseShakeTest, RestAfterAShake) {
    EXPECT_THAT(shake(), ElementsAre(toggle));
    reported.clear();
    for (int stroke = 0; stroke < 9; ++stroke) { // up to 0.89 s after it
        desktop.advance(stroke == 8 ? 0.09 : 0.1);
        move(stroke % 2 == 0 ? 95 : -95);
    }
    EXPECT_THAT(reported, IsEmpty());
    desktop.advance(0.02);
    for (const double dx : {95, -95, 95, -95}) {
        move(dx);
    }
    EXPECT_THAT(reported, ElementsAre(toggle)) << "what came during the rest does not count";
}

struct Choice {
    bool reveal = false;
    bool held = false;
    bool toggleAction = false;
    std::optional<MouseShakeToggleManager::Action> action;
};

TEST_F(MouseShakeTest, SettingsAndModifiersChooseTheAction) {
    const std::optional<MouseShakeToggleManager::Action> nothing;
    const std::vector<Choice> cases = {
        {true, true, true, peek},      {true, true, false, peek},      {true, false, true, toggle},
        {true, false, false, peek},    {false, true, true, toggle},    {false, false, true, toggle},
        {false, true, false, nothing}, {false, false, false, nothing},
    };
    settings.shakeToggleModifier.set("Command"); // makes no difference, held or not
    for (const auto &[reveal, held, toggleAction, action] : cases) {
        settings.shakeToReveal.set(reveal);
        settings.shakeToggleActionEnabled.set(toggleAction);
        const auto received = shake(held ? modifierFlag::shift : modifierFlag::option);
        EXPECT_EQ(received.empty() ? nothing : received.front(), action)
            << reveal << held << toggleAction;
    }
}

TEST_F(MouseShakeTest, ModifiersByName) {
    const std::vector<std::pair<const char *, std::uint32_t>> names = {{"Shift", 1U << 17U},
                                                                       {"Control", 1U << 18U},
                                                                       {"Option", 1U << 19U},
                                                                       {"Command", 1U << 20U}};
    for (const auto &[name, flag] : names) {
        EXPECT_TRUE(MouseShakeToggleManager::modifierMatches(flag | 1U << 16U, name)) << name;
        EXPECT_FALSE(MouseShakeToggleManager::modifierMatches(~flag, name)) << name;
    }
    for (const char *other : {"None", "", "shift", "Caps Lock"}) {
        EXPECT_TRUE(MouseShakeToggleManager::modifierMatches(0, other)) << other;
    }
}

TEST_F(MouseShakeTest, MonitorsOnlyWhileTheSettingIsOn) {
    manager.startListening();
    EXPECT_EQ(desktop.monitorCount(pointerMotionMask), 1);
    for (const double dx : {95, -95, 95}) {
        move(dx);
    }
    settings.mouseShakeToggleEnabled.set(false);
    settings.mouseShakeToggleEnabled.set(true);
    move(-95);
    EXPECT_THAT(reported, IsEmpty()) << "a gesture does not outlive the switch";

    reported.clear();
    for (const double dx : {95, -95, 95, -95, 95}) {
        desktop.movePointer(dx, 0, ScriptedDesktop::Target::lumo);
    }
    EXPECT_THAT(reported, IsEmpty()) << "only what other programs get";
}

// The action may switch the gesture off while the event is still being handled.
TEST_F(MouseShakeTest, SwitchedOffByItsOwnAction) {
    manager.onShakeAction = [this](auto) { settings.mouseShakeToggleEnabled.set(false); };
    shake();
    EXPECT_FALSE(manager.isListening.value());
    EXPECT_EQ(desktop.monitorCount(pointerMotionMask), 0);
}

} // namespace
} // namespace lumo
