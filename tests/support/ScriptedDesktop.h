#pragma once

#include "ScriptedMainLoop.h"
#include "platform/Accessibility.h"
#include "platform/Application.h"
#include "platform/ApplicationStrips.h"
#include "platform/DesktopChanges.h"
#include "platform/EventMonitors.h"
#include "platform/HotKeyService.h"
#include "platform/Keyboard.h"
#include "platform/LoginItem.h"
#include "platform/OverlayWindows.h"
#include "platform/Platform.h"
#include "platform/RemoteControl.h"
#include "platform/Screens.h"
#include "platform/StatusItem.h"
#include "platform/UpdateFramework.h"
#include "platform/UserDefaults.h"
#include "platform/UserNotifications.h"
#include "platform/Vocabulary.h"
#include "platform/WindowServer.h"
#include "platform/Workspace.h"
#include "platform/macos/logic/MacVocabulary.h"
#include "support/Log.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumo::test {

// What became of one overlay window. Kept by the desktop after the window was closed.
struct OverlayState {
    std::uint32_t number = 0;
    Rect frame;
    int level = 0;
    double alpha = 1;
    std::optional<LayerTree> tree;
    int commits = 0;        // every commit
    int changedCommits = 0; // those that differed from the one before
    bool orderedIn = false;
    bool open = true;
};

// A whole desktop in memory: every interface of the platform, driven by the test in the words of
// the desktop. What happens to it is told to observers at once, as if the main loop had just
// learnt of it; what the program asks of it (activating an application) is told in a later turn.
//
// Bounds of windows have the origin at the top left and y down, frames of screens and overlays have
// it at the bottom left and y up.
class ScriptedDesktop final : private WindowServer,
                              private Workspace,
                              private Screens,
                              private OverlayWindows,
                              private RemoteControl,
                              private Accessibility,
                              private Application,
                              private LoginItem,
                              private StatusItem,
                              private UpdateFramework,
                              private ApplicationStrips,
                              private DesktopChanges,
                              private EventMonitors,
                              private HotKeyService,
                              private Keyboard,
                              private UserDefaults,
                              private UserNotifications {
  public:
    using ProcessID = std::int32_t;
    using WindowID = std::uint32_t;
    using DisplayID = std::uint32_t;

    // The clock stands at this time, in seconds, when the test begins.
    explicit ScriptedDesktop(double startTime = 1000,
                             const Vocabulary &words = macos::vocabulary());
    ~ScriptedDesktop() override;

    // What the program under test is given. Valid as long as the desktop.
    Platform platform();

    Capabilities capabilities{true};
    bool announcesChanges = false; // all of them, see DesktopChanges
    Vocabulary vocabulary;
    ScriptedMainLoop mainLoop;
    std::vector<std::string> logLines;

    // Time
    void advance(double seconds) { mainLoop.advance(seconds); }

    // Displays. A display without number is 0 here and has none for the program.
    DisplayID plugDisplay(DisplayID number, const Rect &frame, double scale = 1);
    void unplugDisplay(DisplayID number);
    void resizeDisplay(DisplayID number, const Rect &frame, double scale = 1);
    // As these three, but without a notification.
    void setScreensSilently(std::vector<Screen> screens);

    // Applications
    ProcessID launch(std::string name, std::optional<std::string> bundleIdentifier);
    void quit(ProcessID process);
    void focusApplication(std::optional<ProcessID> process);
    void switchSpace();
    ProcessID lumo() const { return own_.processIdentifier; }
    void setLumoBundleIdentifier(std::optional<std::string> identifier);
    std::vector<ProcessID> activations() const { return activations_; }
    HiddenApplication lastActivation = {};

    std::vector<InstalledApplication> installed;
    int settingsOpened = 0;

    // This program. Starting it once more reaches the running one.
    std::optional<ActivationPolicy> activationPolicy;
    int activationsOfLumo = 0;
    bool isTerminated = false;
    void startLumoAgain() { reopened_.emit(); }
    // Another program's request; why it was not done, absent when it was.
    std::optional<std::string> request(const RemoteRequest &request) { return perform_(request); }

    // What the system did about logging in; what it is to refuse.
    bool isLoginItem = false;
    std::optional<std::string> loginItemError;

    // The status area.
    StatusTitle statusTitle;
    std::string statusToolTip;
    void showStatusItem(bool isShown) {
        isStatusItemShown_ = isShown;
        statusItemShownChanged_.emit();
    }
    void rightClickStatusItem() { statusItemClicked_.emit(StatusItemPlace{}); }

    // Updates.
    bool isUpdaterStarted = false;
    UpdateResult updateResult;

    // Windows. A new one is in front of all others of its layer.
    WindowID openWindow(ProcessID owner, const Rect &bounds, std::optional<std::string> title = {},
                        int layer = 0);
    void raise(WindowID window);
    // Raises the window and gives its application the focus.
    void focus(WindowID window);
    void closeWindow(WindowID window);
    void moveWindow(WindowID window, const Rect &bounds);
    void retitle(WindowID window, std::optional<std::string> title);
    // The list as the window server would give it, or nothing for a server that can't be asked, in
    // place of the windows above.
    void answerWindowListWith(std::shared_ptr<const WindowRecords> records);

    // All that is on screen, overlays included, frontmost first.
    std::vector<WindowID> stack() const;
    // The window next in front of this one, overlays not counted; absent when there is none.
    std::optional<WindowID> windowAbove(WindowID window) const;

    // Overlays, in the order in which they were made.
    const std::vector<std::shared_ptr<OverlayState>> &allOverlays() const { return overlays_; }
    std::vector<const OverlayState *> openOverlays() const;
    // The one open overlay that has this display's frame; a test failure when there is not one.
    OverlayState &overlayOn(DisplayID display) const;
    // The number the next overlay window gets, whatever its width.
    std::optional<std::int64_t> nextOverlayNumber;

    // Accessibility
    bool accessibilityTrusted = true;
    std::vector<WindowID> refusesToRaise;
    std::vector<WindowID> raiseAttempts;
    // Grants or takes away the trust and tells of it; the field alone changes it silently.
    void changeAccessibilityTrust(bool trusted);
    // Tells that another window has the focus.
    void announceFocusedWindow() { focusedWindowChanged_.emit(); }

    // Pointer and keyboard. What the program's own windows get is received by its local monitors,
    // all else by its global ones.
    enum class Target { otherProgram, lumo };
    void movePointer(double dx, std::uint32_t modifierFlags = 0, Target target = {});
    // True when a local monitor swallowed the event.
    bool pressKey(std::uint16_t keyCode, std::uint32_t modifierFlags = 0, Target target = {});
    // Monitors of any of these events.
    int monitorCount(EventMask mask) const;

    // Notifications that the program sent to the user; what is to go wrong with the next ones.
    std::vector<UserNotification> notifications;
    std::optional<std::string> notificationError;

    // Hot keys. A press while the key is down is auto-repeat. Only registered combinations are
    // announced.
    struct HotKey {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        HotKeyID id;
    };
    const std::vector<HotKey> &hotKeys() const { return hotKeys_; }

    // The user chooses a layout on which these keys are called otherwise than on the ANSI layout.
    void changeKeyNames(std::map<std::int64_t, std::string> names);
    void pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers) {
        sendHotKey(keyCode, modifiers, HotKeyEventKind::pressed);
    }
    void releaseHotKey(std::uint32_t keyCode, std::uint32_t modifiers) {
        sendHotKey(keyCode, modifiers, HotKeyEventKind::released);
    }
    void sendHotKeyEvent(const HotKeyEvent &event) { hotKeyEvents_.emit(event); }
    std::vector<std::uint32_t> keyCodesTakenByOthers;
    // Other programs let go of their keys, and what was refused for them is registered.
    void releaseKeysOfOthers();
    bool answersHotKeysLater = false; // in a later turn of the loop, not at once

    // Strips of recent applications, which a program of that name draws.
    static constexpr const char *stripOwner = "Strips";
    std::optional<bool> stripsEnabled;

    // The program's own user defaults.
    std::map<std::string, Value, std::less<>> defaults;
    // Changes them as another program would.
    void changeDefaults(const std::map<std::string, Value, std::less<>> &values);

  private:
    struct Window {
        WindowID number;
        ProcessID owner;
        std::string ownerName;
        Rect bounds;
        std::optional<std::string> title;
        int layer;
        OverlayState *overlay = nullptr;
    };
    struct Monitor {
        EventMask mask;
        Target target;
        std::function<bool(const InputEvent &)> handler;
    };
    using Stack = std::list<Window>;
    using Observer = std::function<void()>;
    class OverlayWindow;
    class AccessibleWindow;

    std::shared_ptr<const WindowRecords> onScreenWindows() const override;

    const RunningApplication *frontmostApplication() const override {
        return frontmost_ ? runningApplication(*frontmost_) : nullptr;
    }
    const std::vector<RunningApplication> &runningApplications() const override {
        return applications_;
    }
    const RunningApplication *runningApplication(ProcessID process) const override;
    const RunningApplication &ownApplication() const override { return own_; }
    std::vector<InstalledApplication> installedApplications() const override { return installed; }
    bool activate(ProcessID process, HiddenApplication hidden) override;
    bool openSystemSettings() override {
        ++settingsOpened;
        return true;
    }
    Handle onDidActivateApplication(Observer observer) override {
        return applicationActivated_.subscribe(std::move(observer));
    }
    Handle onDidTerminateApplication(Observer observer) override {
        return applicationTerminated_.subscribe(std::move(observer));
    }
    Handle onActiveSpaceDidChange(Observer observer) override {
        return spaceChanged_.subscribe(std::move(observer));
    }

    Handle onChange(std::function<void()> observer) override {
        return changed_.subscribe(std::move(observer));
    }

    const std::vector<Screen> &screens() const override { return screens_; }
    Handle onScreenParametersDidChange(Observer observer) override {
        return screensChanged_.subscribe(std::move(observer));
    }

    std::unique_ptr<PlatformWindow> makeWindow(const Rect &frame) override;

    bool isProcessTrusted() const override { return accessibilityTrusted; }
    std::vector<std::unique_ptr<AccessibilityWindow>> windows(ProcessID process) override;

    Handle onProcessTrustDidChange(Observer observer) override {
        return trustChanged_.subscribe(std::move(observer));
    }
    Handle onFocusedWindowDidChange(Observer observer) override {
        return focusedWindowChanged_.subscribe(std::move(observer));
    }

    Handle addGlobalMonitor(EventMask mask,
                            std::function<void(const InputEvent &)> handler) override;
    Handle addLocalMonitor(EventMask mask,
                           std::function<bool(const InputEvent &)> handler) override;

    void add(const UserNotification &notification,
             std::function<void(const std::optional<std::string> &)> completion) override;

    void setActivationPolicy(ActivationPolicy policy) override { activationPolicy = policy; }
    void activateIgnoringOtherApps() override { ++activationsOfLumo; }
    void terminate() override { isTerminated = true; }
    Handle onReopen(Observer observer) override { return reopened_.subscribe(std::move(observer)); }

    Handle onRequest(Perform perform) override {
        perform_ = std::move(perform);
        return Handle([this] { perform_ = nullptr; });
    }

    std::optional<std::string> registerMainApplication() override;
    std::optional<std::string> unregisterMainApplication() override;

    void setToolTip(const std::string &text) override { statusToolTip = text; }
    void setTitle(const StatusTitle &title) override { statusTitle = title; }
    bool isShown() const override { return isStatusItemShown_; }
    Handle onShownChange(Observer observer) override {
        return statusItemShownChanged_.subscribe(std::move(observer));
    }
    Handle onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) override;

    void startUpdater() override { isUpdaterStarted = true; }
    void checkForUpdates(std::function<void(const UpdateResult &)> completion) override;

    std::string keyName(std::int64_t keyCode) const override;
    Handle onNamesDidChange(Observer observer) override {
        return keyNamesChanged_.subscribe(std::move(observer));
    }

    Handle installEventHandler(std::function<void(const HotKeyEvent &)> handler) override;
    Handle registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                          std::function<void(HotKeyStatus)> outcome) override;

    std::optional<bool> areEnabled() const override { return stripsEnabled; }
    bool areDrawnBy(const std::string &name, const std::optional<std::string> &) const override {
        return name == stripOwner;
    }

    std::optional<Value> object(std::string_view key) const override;
    void setBool(std::string_view key, bool value) override { store(key, value); }
    void setInteger(std::string_view key, std::int64_t value) override { store(key, value); }
    void setDouble(std::string_view key, double value) override { store(key, value); }
    void setString(std::string_view key, const std::string &value) override { store(key, value); }
    void setData(std::string_view key, const Bytes &value) override { store(key, value); }
    void removeObject(std::string_view key) override { defaults.erase(std::string(key)); }
    Handle
    onChangeByOthers(std::function<void(const std::vector<std::string> &)> observer) override {
        return defaultsChanged_.subscribe(std::move(observer));
    }

    void store(std::string_view key, Value value) {
        defaults.insert_or_assign(std::string(key), std::move(value));
    }
    void sendHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyEventKind kind);

    Handle addMonitor(Monitor monitor);
    bool send(const InputEvent &event, Target target);
    std::vector<WindowID> windowsOf(ProcessID process) const; // front to back
    Stack::iterator find(WindowID window);
    Stack::iterator require(WindowID window);
    void insertInFront(Window window);
    void place(OverlayState &overlay, Stack::iterator position);
    void orderOverlayOut(OverlayState &overlay);
    void windowsChanged();
    Rect flipped(const Rect &rect) const;
    WindowRecord record(const Window &window) const;

    Log log_;
    std::vector<Screen> screens_;
    RunningApplication own_;
    std::vector<RunningApplication> applications_;
    std::optional<ProcessID> frontmost_;
    std::vector<ProcessID> activations_;
    Stack stack_;
    std::vector<std::shared_ptr<OverlayState>> overlays_;
    struct RefusedHotKey {
        HotKey hotKey;
        std::weak_ptr<std::function<void(HotKeyStatus)>> outcome;
    };

    std::map<std::int64_t, std::string> keyNames_;
    Signal<> keyNamesChanged_;
    std::vector<HotKey> hotKeys_;
    std::vector<RefusedHotKey> refusedHotKeys_;
    Signal<HotKeyEvent> hotKeyEvents_;
    ProcessID nextProcess_ = 100;
    WindowID nextWindow_ = 1;
    bool windowListScripted_ = false;
    // What was handed out last; dropped when anything about the windows changes.
    mutable std::shared_ptr<const WindowRecords> records_;
    Signal<> changed_;
    Signal<> applicationActivated_;
    Signal<> applicationTerminated_;
    Signal<> spaceChanged_;
    Signal<> screensChanged_;
    Signal<> trustChanged_;
    Signal<> focusedWindowChanged_;
    Signal<> reopened_;
    Perform perform_;
    Signal<std::vector<std::string>> defaultsChanged_;
    bool isStatusItemShown_ = true;
    Signal<> statusItemShownChanged_;
    Signal<StatusItemPlace> statusItemClicked_;
    std::list<std::shared_ptr<Monitor>> monitors_;
};

} // namespace lumo::test
