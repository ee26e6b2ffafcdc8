#include "input/ShortcutRecorder.h"

#include "ScriptedDesktop.h"
#include "presentation/Shortcuts.h"
#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <string>

namespace lumo {
namespace {

using test::ScriptedDesktop;
using namespace modifierFlag;

constexpr std::uint32_t functionKey = 1U << 23U;

class ShortcutRecorderTest : public testing::Test {
  protected:
    // True when the key did not reach Lumo's window.
    bool press(std::uint16_t keyCode, std::uint32_t flags) {
        return desktop.pressKey(keyCode, flags, ScriptedDesktop::Target::lumo);
    }
    std::string shown() {
        return shortcutLabel(desktop.platform(), settings.peekShortcutKey.value(),
                             settings.peekShortcutModifiers.value());
    }

    ScriptedDesktop desktop;
    SettingsStore settings{desktop.platform()};
    ShortcutRecorder recorder{desktop.platform(), settings.peekShortcutKey,
                              settings.peekShortcutModifiers};
};

TEST_F(ShortcutRecorderTest, FirstKeyWithAModifierIsRecorded) {
    EXPECT_EQ(shown(), "⌘⌥Tab");
    EXPECT_FALSE(press(40, control));
    EXPECT_EQ(shown(), "⌘⌥Tab");

    recorder.isRecording.set(true);
    EXPECT_TRUE(press(53, 0)) << "Escape is a key like others";
    EXPECT_TRUE(press(40, capsLock | functionKey)) << "no modifiers of a shortcut";
    EXPECT_FALSE(desktop.pressKey(40, control)) << "what other programs get is not recorded";
    EXPECT_TRUE(recorder.isRecording.value());
    EXPECT_EQ(shown(), "⌘⌥Tab");

    EXPECT_TRUE(press(40, control | option | command | shift | capsLock));
    EXPECT_FALSE(recorder.isRecording.value());
    EXPECT_EQ(settings.peekShortcutModifiers.value(), 0x1E00);
    EXPECT_EQ(shown(), "⌘⌥⌃⇧K");
    EXPECT_EQ(desktop.defaults.at("peekShortcutKey"), Value(40));
    EXPECT_FALSE(press(8, control)) << "one shortcut for each recording";
    EXPECT_EQ(shown(), "⌘⌥⌃⇧K");

    recorder.isRecording.set(true);
    EXPECT_TRUE(press(18, shift)) << "Shift alone will do";
    EXPECT_EQ(settings.peekShortcutModifiers.value(), 0x200);
    EXPECT_EQ(shown(), "⇧Key18");

    recorder.isRecording.set(true);
    recorder.isRecording.set(true);
    recorder.isRecording.set(false);
    EXPECT_EQ(desktop.monitorCount(~EventMask{0}), 0);
}

} // namespace
} // namespace lumo
