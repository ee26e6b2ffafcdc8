#include "platform/x11/input/X11Input.h"

#include "MirroredDesktop.h"
#include "bus/RunUntil.h"
#include "platform/HotKeyService.h"
#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/freedesktop/KeyPositions.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/X11Screens.h"
#include "support/Log.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace lumo::x11 {
namespace {

using desktop::Key;
using desktop::WindowManager;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint32_t superMask = XCB_MOD_MASK_4;
constexpr std::uint32_t commandOption = hotKeyModifier::command | hotKeyModifier::option;
constexpr std::uint8_t scrollLockKeycode = 78; // of Linux keyboards
constexpr std::uint8_t superLeftKeycode = 133;

// What of the backend has to do with input, on a desktop without a window manager, and a person who
// uses it.
class InputTest : public testing::Test {
  protected:
    InputTest() {
        const XcbPointer<xcb_xkb_use_extension_reply_t> reply(
            xcb_xkb_use_extension_reply(tester(), xcb_xkb_use_extension(tester(), 1, 0), nullptr));
        EXPECT_NE(reply, nullptr);
    }

    xcb_connection_t *tester() { return mirrored_.session.connection(); }

    // What was done has happened, and all that it caused has been dispatched.
    void catchUp() { mirrored_.catchUp(); }
    bool eventually(const std::function<bool()> &condition) {
        return mirrored_.eventually(condition);
    }

    // For what timers have a part in.
    void turnLoopUntil(const std::function<bool()> &condition) {
        freedesktop::runUntil(loop_, [&] {
            connection_.dispatch();
            connection_.flush();
            return condition();
        });
    }

    void press(const std::vector<Key> &chord) {
        mirrored_.session.press(chord);
        catchUp();
    }

    void lockModifiers(std::uint8_t mask) {
        xcb_xkb_latch_lock_state(tester(), XCB_XKB_ID_USE_CORE_KBD, 0xff, mask, 0, 0, 0, 0, 0);
        catchUp();
    }

    // Puts the key into this modifier (0 to 7) and takes it out of all others.
    void moveKeyToModifier(xcb_keycode_t key, std::size_t modifier) {
        const std::unique_ptr<xcb_get_modifier_mapping_reply_t, FreeDeleter> old(
            xcb_get_modifier_mapping_reply(tester(), xcb_get_modifier_mapping(tester()), nullptr));
        const auto *keys = xcb_get_modifier_mapping_keycodes(old.get());
        const std::size_t before = old->keycodes_per_modifier;
        const std::size_t width = before + 1;
        std::vector<xcb_keycode_t> mapping(8 * width);
        for (std::size_t index = 0; index < 8 * before; ++index) {
            const auto kept = keys[index] == key ? xcb_keycode_t{0} : keys[index];
            mapping[index / before * width + index % before] = kept;
        }
        mapping[modifier * width + before] = key;
        const std::unique_ptr<xcb_set_modifier_mapping_reply_t, FreeDeleter> reply(
            xcb_set_modifier_mapping_reply(
                tester(),
                xcb_set_modifier_mapping(tester(), static_cast<std::uint8_t>(width),
                                         mapping.data()),
                nullptr));
        ASSERT_EQ(reply->status, XCB_MAPPING_STATUS_SUCCESS);
    }

    // Another program takes the key; false when it can't have it.
    bool grabKeyAsOther(std::uint32_t virtualKey, std::uint32_t modifiers) {
        const auto cookie = xcb_grab_key_checked(tester(), 0, mirrored_.session.root(),
                                                 static_cast<std::uint16_t>(modifiers),
                                                 *freedesktop::keycodeOfVirtualKey(virtualKey),
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        return XcbPointer<xcb_generic_error_t>(xcb_request_check(tester(), cookie)) == nullptr;
    }

    MirroredDesktop mirrored_{{.windowManager = WindowManager::none}};
    Connection &connection_ = *mirrored_.connection;
    std::vector<std::string> logLines_;
    Log log_{[this](std::string_view line) { logLines_.emplace_back(line); }};
    freedesktop::GlibMainLoop loop_;
    X11Screens screens_{connection_, loop_};
    bool isActive_ = false; // a window of this program's
    X11Input input_{connection_, *mirrored_.mirror, screens_, [this] { return isActive_; }, loop_,
                    log_};
    const KeyboardModifiers &modifiers_ = input_.modifiers();
    X11EventMonitors &monitors_ = input_.eventMonitors();
    X11HotKeys &hotKeys_ = input_.hotKeys();
};

class HotKeysTest : public InputTest {
  protected:
    HotKeysTest()
        : handler_(hotKeys_.installEventHandler([this](const HotKeyEvent &event) {
            events_.push_back((event.kind == HotKeyEventKind::pressed ? "+" : "-") +
                              std::to_string(event.id->number));
        })) {}

    struct Registration {
        HotKeyStatus status;
        Handle handle;
    };

    // Registers a hot key and waits for the outcome.
    Registration add(std::uint32_t key, std::uint32_t modifiers, std::uint32_t number) {
        // Shared, as the outcome may come again when it changes.
        const auto status = std::make_shared<std::optional<HotKeyStatus>>();
        auto handle = hotKeys_.registerHotKey(
            key, modifiers, {0, number}, [status](HotKeyStatus outcome) { *status = outcome; });
        EXPECT_TRUE(eventually([&] { return status->has_value(); }));
        return {status->value_or(HotKeyStatus::success), std::move(handle)};
    }

    std::vector<std::string> take() { return std::exchange(events_, {}); }

    std::vector<std::string> events_;
    Handle handler_;
};

TEST_F(HotKeysTest, OneEventPerPressUnderAnyLocks) {
    moveKeyToModifier(scrollLockKeycode, 5); // Mod3 is free
    ASSERT_TRUE(eventually([&] { return modifiers_.bits().scrollLock != 0; }));
    const auto bits = modifiers_.bits();
    EXPECT_EQ(bits.command, superMask);
    EXPECT_EQ(bits.option, XCB_MOD_MASK_1);
    ASSERT_NE(bits.numLock, 0);
    const auto toggle = add(49, hotKeyModifier::control, 1);
    const auto peek = add(48, commandOption, 2);
    const auto plain = add(9, 0, 3);
    for (unsigned locks = 0; locks < 8; ++locks) {
        lockModifiers(static_cast<std::uint8_t>(((locks & 1U) != 0 ? XCB_MOD_MASK_LOCK : 0) |
                                                ((locks & 2U) != 0 ? bits.numLock : 0) |
                                                ((locks & 4U) != 0 ? bits.scrollLock : 0)));
        SCOPED_TRACE(locks);
        press({Key::control, Key::space});
        press({Key::option, Key::command, Key::tab});
        press({Key::v});
        EXPECT_THAT(take(), ElementsAre("+1", "-1", "+2", "-2", "+3", "-3"));
        press({Key::control, Key::shift, Key::space}); // one modifier more
        press({Key::space});
        press({Key::command, Key::tab});
        EXPECT_THAT(take(), IsEmpty());
    }
}

TEST_F(HotKeysTest, UnregisteredWhileItIsDown) {
    auto toggle = add(49, hotKeyModifier::control, 1);
    auto &session = mirrored_.session;
    session.setKey(Key::control, true);
    session.setKey(Key::space, true);
    ASSERT_TRUE(eventually([&] { return !events_.empty(); }));
    toggle.handle.reset();
    EXPECT_THAT(take(), ElementsAre("+1", "-1"));
    session.setKey(Key::space, false);
    session.setKey(Key::control, false);
    catchUp();
    take();
    press({Key::control, Key::space});
    EXPECT_THAT(take(), IsEmpty());
    EXPECT_TRUE(grabKeyAsOther(49, XCB_MOD_MASK_CONTROL)) << "a grab was kept";
}

// As when a shortcut has just been recorded and its keys are still down.
TEST_F(HotKeysTest, KeyHeldAtRegistrationCountsFromItsNextPress) {
    auto keys = monitors_.addGlobalMonitor(eventMask(EventType::keyDown), [](const auto &) {});
    auto &session = mirrored_.session;
    const auto wait = [&](double seconds) {
        const double end = loop_.now() + seconds;
        turnLoopUntil([&] { return loop_.now() >= end; });
    };
    struct Hold {
        double duration; // seconds; repeats begin within one
        double pause;    // until the next press
        bool isMonitored;
    };
    session.setKey(Key::control, true);
    for (const auto &[duration, pause, isMonitored] :
         {Hold{0, 0, true}, Hold{1.2, 0, true}, Hold{0, 0.2, false}, Hold{1.2, 0.2, false}}) {
        if (!isMonitored) {
            keys.reset(); // nothing tells of presses but the grab
        }
        session.setKey(Key::space, true);
        auto toggle = add(49, hotKeyModifier::control, 1);
        wait(duration);
        EXPECT_THAT(events_, IsEmpty());
        session.setKey(Key::space, false);
        wait(pause);
        session.setKey(Key::space, true);
        EXPECT_TRUE(eventually([&] { return !events_.empty(); })) << duration << ' ' << isMonitored;
        session.setKey(Key::space, false);
        EXPECT_TRUE(eventually([&] { return !events_.empty() && events_.back() == "-1"; }));
        EXPECT_THAT(take(), ElementsAre("+1", "-1"));
        toggle.handle.reset();
        catchUp();
    }
    session.setKey(Key::control, false);
}

TEST_F(HotKeysTest, KeyOfAnotherProgramIsRefused) {
    ASSERT_TRUE(grabKeyAsOther(49, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_LOCK));
    EXPECT_EQ(add(49, hotKeyModifier::control, 1).status, HotKeyStatus::alreadyTaken);
    const auto own = add(40, hotKeyModifier::control, 2);
    EXPECT_EQ(own.status, HotKeyStatus::success);
    EXPECT_EQ(add(40, hotKeyModifier::control | 1U, 3).status, HotKeyStatus::alreadyTaken)
        << "the masks differ in a bit that no key sets";
    catchUp();
    EXPECT_TRUE(grabKeyAsOther(49, XCB_MOD_MASK_CONTROL)) << "a grab was kept";
    EXPECT_EQ(add(600, 0, 1).status, HotKeyStatus::invalidParameter);
    const auto peek = add(48, commandOption, 2);
    EXPECT_EQ(peek.status, HotKeyStatus::success);
    EXPECT_FALSE(grabKeyAsOther(48, XCB_MOD_MASK_1 | superMask));
    press({Key::option, Key::command, Key::tab});
    EXPECT_THAT(take(), ElementsAre("+2", "-2"));

    // That program lets go, as when it ends: with a window, and without one.
    const auto keys =
        monitors_.addGlobalMonitor(eventMask(EventType::keyDown), [](const auto &) {});
    for (const bool hasWindow : {true, false}) {
        ASSERT_TRUE(grabKeyAsOther(49, XCB_MOD_MASK_CONTROL));
        std::vector<HotKeyStatus> outcomes;
        auto toggle =
            hotKeys_.registerHotKey(49, hotKeyModifier::control, {0, 1},
                                    [&](HotKeyStatus outcome) { outcomes.push_back(outcome); });
        ASSERT_TRUE(eventually([&] { return outcomes.size() == 1; }));
        xcb_ungrab_key(tester(), *freedesktop::keycodeOfVirtualKey(49), mirrored_.session.root(),
                       XCB_MOD_MASK_ANY);
        if (hasWindow) {
            const auto window = xcb_generate_id(tester());
            xcb_create_window(tester(), XCB_COPY_FROM_PARENT, window, mirrored_.session.root(), 0,
                              0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0,
                              nullptr);
            xcb_destroy_window(tester(), window);
            catchUp();
        } else {
            press({Key::control, Key::space});
        }
        turnLoopUntil([&] { return outcomes.size() == 2; });
        EXPECT_THAT(outcomes, ElementsAre(HotKeyStatus::alreadyTaken, HotKeyStatus::success));
        press({Key::control, Key::space});
        EXPECT_THAT(take(), ElementsAre("+1", "-1"));
        toggle.reset();
        catchUp();
    }
}

TEST_F(HotKeysTest, RegisteringWaitsForNoReply) {
    xcb_grab_server(tester()); // which answers no other client then
    mirrored_.session.stacking();
    std::promise<void> registered;
    bool hasWaited = false;
    std::thread release([&] {
        hasWaited =
            registered.get_future().wait_for(std::chrono::seconds(5)) != std::future_status::ready;
        xcb_ungrab_server(tester());
        xcb_flush(tester());
    });
    std::optional<HotKeyStatus> status;
    auto handle = hotKeys_.registerHotKey(49, hotKeyModifier::control, {0, 1},
                                          [&](HotKeyStatus outcome) { status = outcome; });
    hotKeys_
        .registerHotKey(48, 0, {0, 2}, [](HotKeyStatus) { ADD_FAILURE() << "the hot key is gone"; })
        .reset();
    EXPECT_EQ(status, std::nullopt);
    registered.set_value();
    release.join();
    EXPECT_FALSE(hasWaited);
    EXPECT_TRUE(eventually([&] { return status == HotKeyStatus::success; }));
    press({Key::control, Key::space});
    EXPECT_THAT(take(), ElementsAre("+1", "-1"));
    handle.reset();
    catchUp();
    EXPECT_TRUE(grabKeyAsOther(49, XCB_MOD_MASK_CONTROL));
}

TEST_F(HotKeysTest, ModifierKeysMoveToOtherPositions) {
    const auto peek = add(48, commandOption, 2);
    const auto cover = add(8, hotKeyModifier::command, 5);
    ASSERT_TRUE(grabKeyAsOther(8, XCB_MOD_MASK_3));
    const auto command = modifiers_.bits().command;
    moveKeyToModifier(superLeftKeycode, 5);
    ASSERT_TRUE(eventually([&] { return modifiers_.bits().command != command; }));
    EXPECT_EQ(modifiers_.bits().command, XCB_MOD_MASK_3);
    EXPECT_TRUE(eventually([&] { return !logLines_.empty(); }));
    catchUp();
    EXPECT_THAT(logLines_,
                ElementsAre("[Lumo] hotkey lost when the keyboard changed, status=-9878"));
    press({Key::option, Key::command, Key::tab});
    press({Key::command, Key::c});
    EXPECT_THAT(take(), ElementsAre("+2", "-2"));
    EXPECT_TRUE(grabKeyAsOther(48, XCB_MOD_MASK_1 | superMask)) << "the old grabs are given up";

    // Beyond that of the key which nobody can press, and shared with Num Lock.
    for (const std::size_t modifier : {7U, 4U}) {
        moveKeyToModifier(superLeftKeycode, modifier);
        ASSERT_TRUE(eventually([&] { return modifiers_.bits().command == 1U << modifier; }));
        catchUp();
        press({Key::command, Key::c});
        EXPECT_THAT(take(), ElementsAre("+5", "-5")) << modifier;
    }
    moveKeyToModifier(superLeftKeycode, 6);
    ASSERT_TRUE(eventually([&] { return modifiers_.bits().command == superMask; }));
    catchUp();
    press({Key::command, Key::c});
    EXPECT_THAT(take(), ElementsAre("+5", "-5")) << "back where it can be had";
}

class EventMonitorsTest : public InputTest {
  protected:
    // A monitor that is at work and keeps the events that it receives.
    Handle monitor(EventMask mask) {
        auto handle = monitors_.addGlobalMonitor(
            mask, [this](const InputEvent &event) { events_.push_back(event); });
        catchUp();
        return handle;
    }

    void catchUp() {
        InputTest::catchUp();
        monitors_.readMotion();
    }

    std::vector<InputEvent> take() { return std::exchange(events_, {}); }

    // A window of this process that was made on another connection, as the toolkit's are.
    xcb_window_t openOwnWindow() {
        const auto window = xcb_generate_id(toolkit_.get());
        const std::array<std::uint32_t, 2> values = {
            1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_FOCUS_CHANGE};
        xcb_create_window(toolkit_.get(), XCB_COPY_FROM_PARENT, window, mirrored_.session.root(),
                          100, 100, 300, 200, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                          values.data());
        mirrored_.mirror->setInterfaceWindow(window);
        xcb_map_window(toolkit_.get(), window);
        syncToolkit();
        return window;
    }

    // Dispatches nothing.
    static void waitForServer(xcb_connection_t *connection) {
        const XcbPointer<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    }

    void syncToolkit() {
        waitForServer(toolkit_.get());
        catchUp();
    }

    void warpPointerTo(int x, int y) {
        xcb_warp_pointer(tester(), XCB_NONE, mirrored_.session.root(), 0, 0, 0, 0,
                         static_cast<std::int16_t>(x), static_cast<std::int16_t>(y));
        catchUp();
    }

    void setFocus(xcb_window_t window) {
        xcb_set_input_focus(tester(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        catchUp();
    }

    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };
    std::unique_ptr<xcb_connection_t, Disconnect> toolkit_{
        xcb_connect(mirrored_.desktop.displayName().c_str(), nullptr)};
    std::vector<InputEvent> events_;
};

constexpr EventMask keysMask = eventMask(EventType::keyDown);

TEST_F(EventMonitorsTest, MotionInPointsWithButtonsAndModifiers) {
    auto &session = mirrored_.session;
    const auto motion = monitor(pointerMotionMask);
    warpPointerTo(400, 300);
    catchUp();
    EXPECT_THAT(take(), IsEmpty()) << "a warp is no motion";
    session.movePointerBy(30, -20);
    catchUp();
    const auto moves = take();
    ASSERT_THAT(moves, SizeIs(1));
    EXPECT_EQ(moves[0].type, EventType::mouseMoved);
    EXPECT_EQ(moves[0].modifierFlags, 0U);
    EXPECT_EQ(moves[0].deltaX, 30);
    EXPECT_EQ(moves[0].deltaY, -20);

    session.setKey(Key::shift, true);
    const std::vector<std::pair<int, EventType>> buttons = {{1, EventType::leftMouseDragged},
                                                            {2, EventType::otherMouseDragged},
                                                            {3, EventType::rightMouseDragged},
                                                            {4, EventType::mouseMoved}}; // a wheel
    for (const auto &[button, type] : buttons) {
        session.setButton(button, true);
        catchUp();
        session.movePointerBy(5, 0);
        catchUp();
        session.setButton(button, false);
        const auto drags = take();
        ASSERT_THAT(drags, SizeIs(1)) << button;
        EXPECT_EQ(drags[0].type, type) << button;
        EXPECT_EQ(drags[0].modifierFlags, modifierFlag::shift);
    }
    session.setKey(Key::shift, false);

    session.setText(session.root(), "RESOURCE_MANAGER", "STRING", "Xft.dpi:\t192\n");
    turnLoopUntil([&] { return screens_.pointSpace().scale() == 2; });
    ASSERT_EQ(screens_.pointSpace().scale(), 2);
    session.movePointerBy(30, 0);
    catchUp();
    EXPECT_EQ(take().at(0).deltaX, 15);
}

TEST_F(EventMonitorsTest, KeysArriveWhileAnotherProgramGrabsThem) {
    auto &session = mirrored_.session;
    const auto keys = monitor(keysMask | eventMask(EventType::flagsChanged));
    const auto pressEmergency = [&] {
        press({Key::control, Key::option, Key::command, Key::d});
        const auto events = take();
        EXPECT_THAT(events, SizeIs(7)) << "three down, the key, three up";
        const auto key = std::ranges::find(events, EventType::keyDown, &InputEvent::type);
        return key != events.end() ? *key : InputEvent{};
    };
    EXPECT_EQ(pressEmergency().modifierFlags, 0x1C0000U);
    const auto grab = xcb_grab_keyboard(tester(), 1, session.root(), XCB_CURRENT_TIME,
                                        XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const XcbPointer<xcb_grab_keyboard_reply_t> granted(
        xcb_grab_keyboard_reply(tester(), grab, nullptr));
    ASSERT_EQ(granted->status, XCB_GRAB_STATUS_SUCCESS);
    const auto event = pressEmergency();
    EXPECT_EQ(event.modifierFlags, 0x1C0000U);
    EXPECT_EQ(event.keyCode, 2);
    xcb_ungrab_keyboard(tester(), XCB_CURRENT_TIME);

    lockModifiers(static_cast<std::uint8_t>(XCB_MOD_MASK_LOCK | modifiers_.bits().numLock));
    take();
    EXPECT_EQ(pressEmergency().modifierFlags, 0x1D0000U) << "Caps Lock counts, Num Lock does not";
}

TEST_F(EventMonitorsTest, EventsInOwnWindowsAreLocal) {
    auto &session = mirrored_.session;
    warpPointerTo(10, 10);
    const auto window = openOwnWindow();
    const auto all = monitor(keysMask | pointerMotionMask);
    setFocus(window);
    press({Key::v});
    EXPECT_THAT(take(), IsEmpty());
    session.movePointerBy(5, 0);
    catchUp();
    EXPECT_THAT(take(), SizeIs(1)) << "the pointer is elsewhere";
    warpPointerTo(150, 150);
    session.movePointerBy(5, 0);
    catchUp();
    EXPECT_THAT(take(), IsEmpty());
    warpPointerTo(10, 10);
    session.movePointerBy(5, 0);
    catchUp();
    EXPECT_THAT(take(), SizeIs(1));

    setFocus(XCB_INPUT_FOCUS_POINTER_ROOT);
    press({Key::v});
    EXPECT_THAT(take(), SizeIs(1));
    setFocus(window);
    xcb_destroy_window(toolkit_.get(), window);
    syncToolkit();
    press({Key::v});
    EXPECT_THAT(take(), SizeIs(1)) << "a window that is gone has no focus";

    warpPointerTo(150, 150);
    catchUp();
    setFocus(openOwnWindow()); // beneath the pointer
    session.movePointerBy(5, 0);
    press({Key::v});
    EXPECT_THAT(take(), IsEmpty());
}

// What the toolkit reads from its connection is handed over, and the rest of it kept.
class ToolkitTest : public EventMonitorsTest {
  protected:
    void readToolkitEvents() {
        syncToolkit();
        handleToolkitEvents();
    }

    void handleToolkitEvents() {
        while (auto *event = xcb_poll_for_event(toolkit_.get())) {
            const XcbPointer<xcb_generic_event_t> owner(event);
            if (!input_.handleToolkitEvent(*event) && event->response_type == XCB_KEY_PRESS) {
                typed_.push_back(reinterpret_cast<const xcb_key_press_event_t &>(*event).detail);
            }
        }
    }

    // A local monitor of keys, which swallows them or not.
    Handle monitorLocally() {
        return monitors_.addLocalMonitor(keysMask, [this](const InputEvent &event) {
            local_.push_back(event);
            return swallows_;
        });
    }

    bool swallows_ = false;
    std::vector<InputEvent> local_;
    std::vector<xcb_keycode_t> typed_; // what is left to the toolkit
};

TEST_F(ToolkitTest, LocalMonitorsMaySwallowKeys) {
    const auto first = monitorLocally();
    int receivedBySecond = 0;
    const auto second = monitors_.addLocalMonitor(keysMask, [&](const InputEvent &) {
        ++receivedBySecond;
        return false;
    });
    setFocus(openOwnWindow());
    press({Key::control, Key::d});
    readToolkitEvents();
    ASSERT_THAT(local_, SizeIs(1)) << "a modifier key is no key of its own";
    EXPECT_EQ(local_[0].keyCode, 2);
    EXPECT_EQ(local_[0].modifierFlags, modifierFlag::control);
    EXPECT_EQ(receivedBySecond, 1);
    EXPECT_THAT(typed_, SizeIs(2));

    swallows_ = true;
    typed_.clear();
    press({Key::d});
    readToolkitEvents();
    EXPECT_THAT(local_, SizeIs(2));
    EXPECT_EQ(receivedBySecond, 1);
    EXPECT_THAT(typed_, IsEmpty());
}

// As its popups make. The keys differ, as the same key would be the same press within a
// millisecond.
TEST_F(ToolkitTest, OwnGrabMakesKeysLocal) {
    const auto global = monitor(keysMask);
    const auto local = monitorLocally();
    const auto hotKey =
        hotKeys_.registerHotKey(49, hotKeyModifier::control, {0, 1}, [](HotKeyStatus) {});
    catchUp();
    int hotKeyPresses = 0;
    const auto handler = hotKeys_.installEventHandler([&](const HotKeyEvent &event) {
        hotKeyPresses += event.kind == HotKeyEventKind::pressed ? 1 : 0;
    });
    const auto window = openOwnWindow();
    const auto grab = [&] {
        const XcbPointer<xcb_grab_keyboard_reply_t> granted(
            xcb_grab_keyboard_reply(toolkit_.get(),
                                    xcb_grab_keyboard(toolkit_.get(), 1, window, XCB_CURRENT_TIME,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                    nullptr));
        return granted != nullptr && granted->status == XCB_GRAB_STATUS_SUCCESS;
    };
    ASSERT_TRUE(grab());
    press({Key::v});
    EXPECT_THAT(take(), SizeIs(1)) << "nothing here tells of the grab yet";
    readToolkitEvents();
    EXPECT_THAT(local_, IsEmpty()) << "the same press a second time";

    press({Key::c});
    EXPECT_THAT(take(), IsEmpty());
    readToolkitEvents();
    EXPECT_THAT(std::exchange(local_, {}), SizeIs(1));
    press({Key::control, Key::space});
    readToolkitEvents();
    EXPECT_EQ(hotKeyPresses, 1) << "hot keys act there too";

    xcb_ungrab_keyboard(toolkit_.get(), XCB_CURRENT_TIME);
    readToolkitEvents();
    local_.clear();
    press({Key::d});
    EXPECT_THAT(take(), SizeIs(1));
    ASSERT_TRUE(grab());
    readToolkitEvents();
    xcb_destroy_window(toolkit_.get(), window);
    syncToolkit();
    press({Key::n});
    EXPECT_THAT(take(), SizeIs(1)) << "a window that is gone has no grab";
    EXPECT_THAT(local_, IsEmpty());
}

// As when a shortcut has just been recorded and the server is quicker than this program.
TEST_F(ToolkitTest, ReleaseBeforeTheReplyToARegistration) {
    setFocus(openOwnWindow());
    mirrored_.session.setKey(Key::v, true);
    readToolkitEvents();
    const auto hotKey = hotKeys_.registerHotKey(9, 0, {0, 1}, [](HotKeyStatus) {});
    waitForServer(connection_);
    mirrored_.session.setKey(Key::v, false);
    waitForServer(toolkit_.get());
    handleToolkitEvents();
    int hotKeyPresses = 0;
    const auto handler = hotKeys_.installEventHandler([&](const HotKeyEvent &event) {
        hotKeyPresses += event.kind == HotKeyEventKind::pressed ? 1 : 0;
    });
    catchUp();
    press({Key::v});
    EXPECT_EQ(hotKeyPresses, 1);
}

TEST_F(ToolkitTest, ActiveWindowReceivesHotKeysFirst) {
    isActive_ = true;
    swallows_ = true;
    const auto local = monitorLocally();
    std::vector<HotKeyEvent> hotKeyEvents;
    const auto handler = hotKeys_.installEventHandler(
        [&](const HotKeyEvent &event) { hotKeyEvents.push_back(event); });
    const auto hotKey =
        hotKeys_.registerHotKey(49, hotKeyModifier::control, {0, 1}, [](HotKeyStatus) {});
    catchUp();
    press({Key::control, Key::space});
    EXPECT_THAT(local_, SizeIs(1)) << "as when a shortcut is recorded that is in use";
    EXPECT_THAT(hotKeyEvents, IsEmpty());
    swallows_ = false;
    press({Key::control, Key::space});
    EXPECT_THAT(local_, SizeIs(2));
    EXPECT_THAT(hotKeyEvents, SizeIs(2));
}

TEST_F(EventMonitorsTest, MotionIsCollectedWithoutRequestsAndOnlyWhileItIsWanted) {
    auto motion = monitor(pointerMotionMask);
    auto other = monitors_.addGlobalMonitor(pointerMotionMask, [](const auto &) {});
    const auto before = connection_.bytesSent();
    const double start = loop_.now();
    double sum = 0;
    for (int step = 0; step < 500; ++step) {
        mirrored_.session.movePointerBy(step % 2 == 0 ? 7 : -6, 0);
        g_main_context_iteration(nullptr, FALSE);
    }
    turnLoopUntil([&] {
        sum = 0;
        std::ranges::for_each(events_, [&](const auto &event) { sum += event.deltaX; });
        return sum == 250;
    });
    EXPECT_EQ(sum, 250);
    EXPECT_LE(take().size(), 2 + 60 * (loop_.now() - start));
    EXPECT_EQ(connection_.bytesSent(), before);

    motion.reset();
    other.reset();
    catchUp();
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    mirrored_.session.movePointerBy(3, 0);
    bool isOver = false;
    const auto alarm = loop_.after(0.1, [&] { isOver = true; });
    int turns = 0;
    while (!isOver) {
        turns += g_main_context_iteration(nullptr, TRUE) != FALSE ? 1 : 0;
    }
    EXPECT_EQ(turns, 1) << "nothing arrives any more";
}

} // namespace
} // namespace lumo::x11
