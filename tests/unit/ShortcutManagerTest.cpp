#include "input/ShortcutManager.h"

#include "ScriptedDesktop.h"
#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace lumo {
namespace {

using test::ScriptedDesktop;
using testing::ElementsAre;
using testing::IsEmpty;
using enum ShortcutEvent;

constexpr std::uint32_t commandOption = hotKeyModifier::command | hotKeyModifier::option;

class ShortcutManagerTest : public testing::Test {
  protected:
    ShortcutManagerTest() {
        manager->onShortcutTriggered = [this](ShortcutEvent event) { triggered.push_back(event); };
    }

    void listen() {
        manager->installHotKeyHandlerIfNeeded();
        manager->registerHotKeys();
        manager->isListening.set(true);
    }

    std::vector<ShortcutEvent> press(std::uint32_t keyCode, std::uint32_t modifiers) {
        triggered.clear();
        desktop.pressHotKey(keyCode, modifiers);
        desktop.releaseHotKey(keyCode, modifiers);
        return triggered;
    }

    ScriptedDesktop desktop;
    Platform platform = desktop.platform();
    SettingsStore settings{platform};
    std::unique_ptr<ShortcutManager> manager =
        std::make_unique<ShortcutManager>(platform, settings);
    std::vector<ShortcutEvent> triggered;
};

TEST_F(ShortcutManagerTest, DefaultsTriggerOncePerPress) {
    EXPECT_THAT(desktop.hotKeys(), IsEmpty());
    listen();
    EXPECT_THAT(press(49, hotKeyModifier::control), ElementsAre(toggle));
    EXPECT_THAT(press(48, commandOption), ElementsAre(peek));
    EXPECT_THAT(press(8, commandOption), ElementsAre(setCoverFromFrontmost));
    EXPECT_EQ(desktop.hotKeys().front().id, (HotKeyID{0x4C554D50, 2})); // Peek first

    triggered.clear();
    for (int repeat = 0; repeat < 14; ++repeat) {
        desktop.pressHotKey(48, commandOption);
    }
    desktop.sendHotKeyEvent({std::nullopt, HotKeyEventKind::pressed});
    desktop.sendHotKeyEvent({HotKeyID{0, 3}, HotKeyEventKind::pressed});
    EXPECT_THAT(triggered, ElementsAre(peek));
    desktop.sendHotKeyEvent({HotKeyID{0, 1}, HotKeyEventKind::pressed}); // whatever the signature
    EXPECT_THAT(triggered, ElementsAre(peek, toggle));
}

TEST_F(ShortcutManagerTest, ConflictsAndRefusalsCostOneShortcut) {
    for (const bool answersLater : {false, true}) {
        SCOPED_TRACE(answersLater ? "outcomes in later turns" : "outcomes at once");
        desktop.answersHotKeysLater = answersLater;
        manager->isListening.set(false);
        settings.peekShortcutKey.set(48);
        settings.toggleShortcutKey.set(48);
        settings.coverSetShortcutKey.set(8);
        settings.coverSetShortcutModifiers.set(3072);
        settings.toggleShortcutModifiers.set(3072);
        desktop.keyCodesTakenByOthers = {8};
        desktop.mainLoop.runPosted();
        desktop.logLines.clear();
        listen();
        desktop.mainLoop.runPosted();
        EXPECT_THAT(desktop.logLines,
                    ElementsAre("[Lumo] Toggle hotkey skipped due to conflict: 48-3072",
                                "[Lumo] Cover hotkey register failed, status=-9878"));
        EXPECT_THAT(press(48, commandOption), ElementsAre(peek));

        // A refused combination is not claimed, and masks that differ in meaningless bits do not
        // conflict.
        desktop.logLines.clear();
        settings.peekShortcutKey.set(8);
        settings.toggleShortcutKey.set(8);
        settings.coverSetShortcutKey.set(7);
        settings.coverSetShortcutModifiers.set(3072 | 1);
        desktop.mainLoop.runPosted();
        EXPECT_THAT(desktop.logLines,
                    ElementsAre("[Lumo] Peek hotkey register failed, status=-9878",
                                "[Lumo] Toggle hotkey register failed, status=-9878"));
        EXPECT_THAT(press(7, commandOption), ElementsAre(setCoverFromFrontmost));
    }
}

TEST_F(ShortcutManagerTest, KeysOfAnotherProgramAreTriedAgain) {
    desktop.keyCodesTakenByOthers = {48, 49};
    listen();
    std::vector<std::string> toggleTaken;
    const auto taken = manager->isTaken(toggle).subscribe(
        [&](bool isTaken) { toggleTaken.emplace_back(isTaken ? "taken" : "free"); });
    EXPECT_TRUE(manager->isTaken(peek).value());
    EXPECT_FALSE(manager->isTaken(setCoverFromFrontmost).value());
    const auto said = desktop.logLines;
    manager->retryTaken();
    EXPECT_THAT(toggleTaken, ElementsAre("taken"));
    desktop.keyCodesTakenByOthers = {48};
    manager->retryTaken();
    EXPECT_THAT(toggleTaken, ElementsAre("taken", "free"));
    EXPECT_THAT(press(49, hotKeyModifier::control), ElementsAre(toggle));
    desktop.releaseKeysOfOthers(); // which the system itself notices
    EXPECT_FALSE(manager->isTaken(peek).value());
    EXPECT_THAT(press(48, commandOption), ElementsAre(peek));
    EXPECT_EQ(desktop.logLines, said);
}

TEST_F(ShortcutManagerTest, NumbersThatAreNoKeyCodesCostOneLine) {
    constexpr std::int64_t large = 5'000'000'000;
    desktop.defaults = {{"toggleShortcutKey", large}, {"peekShortcutKey", -1}};
    SettingsStore edited(platform);
    ShortcutManager shortcuts(platform, edited);
    shortcuts.registerHotKeys();
    EXPECT_THAT(desktop.logLines,
                ElementsAre("[Lumo] Peek hotkey left out: -1 is no key code",
                            "[Lumo] Toggle hotkey left out: 5000000000 is no key code"));
    EXPECT_EQ(desktop.hotKeys().size(), 1U);
    EXPECT_EQ(desktop.defaults.at("toggleShortcutKey"), Value(large));
}

TEST_F(ShortcutManagerTest, OutcomesThatComeTooLateChangeNothing) {
    desktop.answersHotKeysLater = true;
    desktop.keyCodesTakenByOthers = {48};
    listen();
    manager->unregisterHotKeys();
    desktop.mainLoop.runPosted();
    EXPECT_THAT(desktop.hotKeys(), IsEmpty());
    EXPECT_THAT(desktop.logLines, IsEmpty());
    listen();
    manager.reset();
    desktop.mainLoop.runPosted();
    EXPECT_THAT(desktop.hotKeys(), IsEmpty());
    EXPECT_THAT(desktop.logLines, IsEmpty());
}

TEST_F(ShortcutManagerTest, SettingsAreFollowedOnlyWhileListening) {
    settings.peekShortcutKey.set(40);
    desktop.mainLoop.runPosted();
    EXPECT_THAT(desktop.hotKeys(), IsEmpty());
    EXPECT_FALSE(manager->isListening.value());

    listen();
    settings.peekShortcutEnabled.set(false);
    settings.toggleShortcutKey.set(17);
    desktop.mainLoop.runPosted();
    EXPECT_THAT(press(40, commandOption), IsEmpty());
    EXPECT_THAT(press(17, hotKeyModifier::control), ElementsAre(toggle));
    EXPECT_TRUE(manager->isListening.value());

    int registrations = 0;
    const auto counter = manager->isListening.subscribeToChanges(
        [&](bool listening) { registrations += listening ? 1 : 0; });
    settings.toggleShortcutKey.set(8); // as recorded; the settings change one after the other
    settings.toggleShortcutModifiers.set(3072);
    settings.coverSetShortcutKey.set(7);
    desktop.logLines.clear();
    desktop.mainLoop.runPosted();
    EXPECT_EQ(registrations, 1);
    EXPECT_THAT(desktop.logLines, IsEmpty()) << "only what comes of it in the end can conflict";
    EXPECT_THAT(press(8, commandOption), ElementsAre(toggle));

    desktop.pressHotKey(8, commandOption);
    settings.toggleShortcutKey.set(17);
    desktop.mainLoop.runPosted();
    EXPECT_THAT(press(17, commandOption), ElementsAre(toggle)) << "the other key was still held";

    manager.reset();
    EXPECT_THAT(desktop.hotKeys(), IsEmpty());
}

TEST_F(ShortcutManagerTest, EventsFromAnotherThread) {
    listen();
    std::thread([&] { desktop.pressHotKey(48, commandOption); }).join();
    EXPECT_THAT(triggered, IsEmpty());
    desktop.mainLoop.runPosted();
    EXPECT_THAT(triggered, ElementsAre(peek));
}

TEST(ShortcutConversions, SignaturesAndModifiers) {
    EXPECT_EQ(fourCC("LUMT"), 0x4C554D54U);
    EXPECT_EQ(fourCC(""), 0U);
    EXPECT_EQ(fourCC("LUMTX"), fourCC("LUMT"));
    EXPECT_EQ(fourCC("L\u00DCMT"), 0x4CDC4D54U);
    EXPECT_EQ(fourCC("\u20ACTX\U0001F512Y"), 0xAC55FD12U);
    EXPECT_EQ(hotKeyModifiers(0x1E00), 0x1B00U);
    EXPECT_EQ(hotKeyModifiers(0x400), 0x100U);
    EXPECT_EQ(hotKeyModifiers(0xE1FF), 0U);
}

} // namespace
} // namespace lumo
