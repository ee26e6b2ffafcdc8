#include "ScriptedDesktop.h"

#include "platform/macos/logic/AnsiKeyboard.h"

#include <algorithm>
#include <ranges>
#include <stdexcept>

namespace lumo::test {

// The program's end of one overlay; the state stays with the desktop.
class ScriptedDesktop::OverlayWindow final : public PlatformWindow {
  public:
    OverlayWindow(ScriptedDesktop &desktop, OverlayState &state, std::int64_t number)
        : desktop_(desktop)
        , state_(state)
        , number_(number) {}

    ~OverlayWindow() override {
        orderOut();
        state_.open = false;
    }

    OverlayWindow(const OverlayWindow &) = delete;
    OverlayWindow &operator=(const OverlayWindow &) = delete;

    std::int64_t windowNumber() const override { return number_; }

    Rect frame() const override { return state_.frame; }
    void setFrame(const Rect &frame) override {
        state_.frame = frame;
        desktop_.windowsChanged();
    }

    int level() const override { return state_.level; }
    void setLevel(int level) override { state_.level = level; }

    double alphaValue() const override { return state_.alpha; }
    void setAlphaValue(double alpha) override { state_.alpha = alpha; }

    void orderFront() override {
        desktop_.place(state_, std::ranges::find_if(desktop_.stack_, [](const Window &each) {
                           return each.layer <= 0;
                       }));
    }
    void orderBelow(std::uint32_t window) override {
        const auto target = desktop_.find(window);
        if (target != desktop_.stack_.end()) {
            desktop_.place(state_, std::next(target));
        }
    }
    void orderOut() override { desktop_.orderOverlayOut(state_); }

    std::optional<double> backingScaleFactor() const override {
        const Screen *best = nullptr;
        double bestArea = 0;
        for (const auto &screen : desktop_.screens_) {
            const Rect common = screen.frame.intersection(state_.frame);
            if (!common.isEmpty() && common.area() > bestArea) {
                best = &screen;
                bestArea = common.area();
            }
        }
        return best ? std::optional(best->backingScaleFactor) : std::nullopt;
    }

    void commit(const LayerTree &tree) override {
        ++state_.commits;
        if (state_.tree != tree) {
            ++state_.changedCommits;
            state_.tree = tree;
        }
    }

  private:
    ScriptedDesktop &desktop_;
    OverlayState &state_;
    std::int64_t number_;
};

class ScriptedDesktop::AccessibleWindow final : public AccessibilityWindow {
  public:
    AccessibleWindow(ScriptedDesktop &desktop, WindowID window)
        : desktop_(desktop)
        , window_(window) {}

    bool raise() override {
        desktop_.raiseAttempts.push_back(window_);
        if (std::ranges::count(desktop_.refusesToRaise, window_) > 0 ||
            desktop_.find(window_) == desktop_.stack_.end()) {
            return false;
        }
        desktop_.raise(window_);
        return true;
    }

  private:
    ScriptedDesktop &desktop_;
    WindowID window_;
};

ScriptedDesktop::ScriptedDesktop(double startTime, const Vocabulary &words)
    : vocabulary(words)
    , mainLoop(startTime)
    , log_([this](std::string_view line) { logLines.emplace_back(line); }) {
    own_ = {nextProcess_++, "app.lumo.Lumo", "Lumo", ActivationPolicy::accessory};
    applications_.push_back(own_);
}

ScriptedDesktop::~ScriptedDesktop() = default;

Platform ScriptedDesktop::platform() {
    return {.accessibility = *this,
            .application = *this,
            .applicationStrips = *this,
            .eventMonitors = *this,
            .hotKeyService = *this,
            .keyboard = *this,
            .log = log_,
            .loginItem = *this,
            .loginItemLog = log_,
            .mainLoop = mainLoop,
            .overlayWindows = *this,
            .screens = *this,
            .statusItem = *this,
            .updateFramework = *this,
            .userDefaults = *this,
            .userNotifications = *this,
            .vocabulary = vocabulary,
            .windowServer = *this,
            .workspace = *this,
            .capabilities = capabilities,
            .desktopChanges = announcesChanges ? this : nullptr,
            .remoteControl = this};
}

ScriptedDesktop::DisplayID ScriptedDesktop::plugDisplay(DisplayID number, const Rect &frame,
                                                        double scale) {
    screens_.push_back({number == 0 ? std::nullopt : std::optional(number), frame, scale});
    windowsChanged();
    screensChanged_.emit();
    return number;
}

void ScriptedDesktop::unplugDisplay(DisplayID number) {
    std::erase_if(screens_,
                  [number](const Screen &screen) { return screen.number.value_or(0) == number; });
    windowsChanged();
    screensChanged_.emit();
}

void ScriptedDesktop::resizeDisplay(DisplayID number, const Rect &frame, double scale) {
    for (auto &screen : screens_) {
        if (screen.number.value_or(0) == number) {
            screen.frame = frame;
            screen.backingScaleFactor = scale;
        }
    }
    windowsChanged();
    screensChanged_.emit();
}

void ScriptedDesktop::setScreensSilently(std::vector<Screen> screens) {
    screens_ = std::move(screens);
    windowsChanged();
}

ScriptedDesktop::ProcessID ScriptedDesktop::launch(std::string name,
                                                   std::optional<std::string> bundleIdentifier) {
    const ProcessID process = nextProcess_++;
    applications_.push_back(
        {process, std::move(bundleIdentifier), std::move(name), ActivationPolicy::regular});
    changed_.emit();
    return process;
}

void ScriptedDesktop::quit(ProcessID process) {
    std::erase_if(applications_, [process](const RunningApplication &application) {
        return application.processIdentifier == process;
    });
    stack_.remove_if([process](const Window &window) { return window.owner == process; });
    windowsChanged();
    if (frontmost_ == process) {
        frontmost_.reset();
    }
    applicationTerminated_.emit();
}

void ScriptedDesktop::focusApplication(std::optional<ProcessID> process) {
    frontmost_ = process;
    changed_.emit();
    applicationActivated_.emit();
}

void ScriptedDesktop::switchSpace() {
    changed_.emit();
    spaceChanged_.emit();
}

void ScriptedDesktop::setLumoBundleIdentifier(std::optional<std::string> identifier) {
    own_.bundleIdentifier = std::move(identifier);
    applications_.front() = own_;
}

const RunningApplication *ScriptedDesktop::runningApplication(ProcessID process) const {
    const auto found = std::ranges::find(applications_, process,
                                         [](const auto &each) { return each.processIdentifier; });
    return found == applications_.end() ? nullptr : &*found;
}

bool ScriptedDesktop::activate(ProcessID process, HiddenApplication hidden) {
    lastActivation = hidden;
    activations_.push_back(process);
    mainLoop.post([this, process] {
        for (const auto window : windowsOf(process) | std::views::reverse) {
            raise(window);
        }
        focusApplication(process);
    });
    return true;
}

std::optional<std::string> ScriptedDesktop::registerMainApplication() {
    isLoginItem = isLoginItem || !loginItemError;
    return loginItemError;
}

std::optional<std::string> ScriptedDesktop::unregisterMainApplication() {
    isLoginItem = isLoginItem && loginItemError;
    return loginItemError;
}

Handle ScriptedDesktop::onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) {
    return statusItemClicked_.subscribe(std::move(observer));
}

void ScriptedDesktop::checkForUpdates(std::function<void(const UpdateResult &)> completion) {
    mainLoop.post(
        [completion = std::move(completion), result = updateResult] { completion(result); });
}

ScriptedDesktop::WindowID ScriptedDesktop::openWindow(ProcessID owner, const Rect &bounds,
                                                      std::optional<std::string> title, int layer) {
    const auto *application = runningApplication(owner);
    auto name = application == nullptr ? "Process" : application->localizedName.value_or("");
    const WindowID number = nextWindow_++;
    insertInFront({number, owner, std::move(name), bounds, std::move(title), layer});
    return number;
}

void ScriptedDesktop::raise(WindowID window) {
    const auto entry = require(window);
    Window moved = std::move(*entry);
    stack_.erase(entry);
    insertInFront(std::move(moved));
}

void ScriptedDesktop::focus(WindowID window) {
    raise(window);
    focusApplication(require(window)->owner);
}

void ScriptedDesktop::closeWindow(WindowID window) {
    stack_.erase(require(window));
    windowsChanged();
}

void ScriptedDesktop::moveWindow(WindowID window, const Rect &bounds) {
    require(window)->bounds = bounds;
    windowsChanged();
}

void ScriptedDesktop::retitle(WindowID window, std::optional<std::string> title) {
    require(window)->title = std::move(title);
    windowsChanged();
}

void ScriptedDesktop::answerWindowListWith(std::shared_ptr<const WindowRecords> records) {
    windowListScripted_ = true;
    records_ = std::move(records);
}

std::vector<ScriptedDesktop::WindowID> ScriptedDesktop::windowsOf(ProcessID process) const {
    std::vector<WindowID> numbers;
    for (const auto &window : stack_) {
        if (window.owner == process) {
            numbers.push_back(window.number);
        }
    }
    return numbers;
}

std::vector<ScriptedDesktop::WindowID> ScriptedDesktop::stack() const {
    std::vector<WindowID> numbers;
    for (const auto &window : stack_) {
        numbers.push_back(window.number);
    }
    return numbers;
}

std::optional<ScriptedDesktop::WindowID> ScriptedDesktop::windowAbove(WindowID window) const {
    std::optional<WindowID> above;
    for (const auto &each : stack_) {
        if (each.number == window) {
            return above;
        }
        if (!each.overlay) {
            above = each.number;
        }
    }
    throw std::logic_error("no such window on screen");
}

std::shared_ptr<const WindowRecords> ScriptedDesktop::onScreenWindows() const {
    if (windowListScripted_ || records_) {
        return records_;
    }
    auto records = std::make_shared<WindowRecords>();
    records->reserve(stack_.size());
    for (const auto &window : stack_) {
        records->push_back(record(window));
    }
    records_ = std::move(records);
    return records_;
}

WindowRecord ScriptedDesktop::record(const Window &window) const {
    return {.number = window.number,
            .ownerProcess = window.owner,
            .ownerName = window.ownerName,
            .layer = window.layer,
            .bounds = window.overlay ? flipped(window.overlay->frame) : window.bounds,
            .isOnScreen = true,
            .title = window.title,
            .alpha = window.overlay ? window.overlay->alpha : 1.0};
}

void ScriptedDesktop::windowsChanged() {
    if (!windowListScripted_) {
        records_.reset();
    }
    changed_.emit();
}

Rect ScriptedDesktop::flipped(const Rect &rect) const {
    double top = 0;
    for (const auto &screen : screens_) {
        top = std::max(top, screen.frame.maxY());
    }
    return {rect.x, top - rect.maxY(), rect.width, rect.height};
}

ScriptedDesktop::Stack::iterator ScriptedDesktop::find(WindowID window) {
    return std::ranges::find(stack_, window, &Window::number);
}

ScriptedDesktop::Stack::iterator ScriptedDesktop::require(WindowID window) {
    const auto found = find(window);
    if (found == stack_.end()) {
        throw std::logic_error("no such window on screen");
    }
    return found;
}

void ScriptedDesktop::insertInFront(Window window) {
    const auto position = std::ranges::find_if(
        stack_, [&](const Window &each) { return each.layer <= window.layer; });
    stack_.insert(position, std::move(window));
    windowsChanged();
}

std::unique_ptr<PlatformWindow> ScriptedDesktop::makeWindow(const Rect &frame) {
    auto state = std::make_shared<OverlayState>();
    state->number = nextWindow_++;
    state->frame = frame;
    overlays_.push_back(state);
    const auto number = std::exchange(nextOverlayNumber, std::nullopt).value_or(state->number);
    return std::make_unique<OverlayWindow>(*this, *state, number);
}

std::vector<const OverlayState *> ScriptedDesktop::openOverlays() const {
    std::vector<const OverlayState *> open;
    for (const auto &overlay : overlays_) {
        if (overlay->open) {
            open.push_back(overlay.get());
        }
    }
    return open;
}

OverlayState &ScriptedDesktop::overlayOn(DisplayID display) const {
    const auto screen = std::ranges::find(
        screens_, display, [](const Screen &each) { return each.number.value_or(0); });
    OverlayState *found = nullptr;
    for (const auto &overlay : overlays_) {
        if (screen != screens_.end() && overlay->open && overlay->frame == screen->frame) {
            if (found) {
                throw std::logic_error("more than one overlay on the display");
            }
            found = overlay.get();
        }
    }
    if (!found) {
        throw std::logic_error("no overlay on the display");
    }
    return *found;
}

// Overlays among themselves keep their order: an overlay is in place when nothing but other
// overlays lies between it and where it was asked to be.
void ScriptedDesktop::place(OverlayState &overlay, Stack::iterator position) {
    auto settled = position;
    while (settled != stack_.end() && settled->overlay != nullptr && settled->overlay != &overlay) {
        ++settled;
    }
    if (settled != stack_.end() && settled->overlay == &overlay) {
        return;
    }
    const auto entry = find(overlay.number);
    if (entry == stack_.end()) {
        stack_.insert(position, {overlay.number, lumo(), "Lumo", {}, {}, 0, &overlay});
    } else {
        stack_.splice(position, stack_, entry);
    }
    overlay.orderedIn = true;
    windowsChanged();
}

void ScriptedDesktop::orderOverlayOut(OverlayState &overlay) {
    const auto entry = find(overlay.number);
    if (entry != stack_.end()) {
        stack_.erase(entry);
        windowsChanged();
    }
    overlay.orderedIn = false;
}

std::vector<std::unique_ptr<AccessibilityWindow>> ScriptedDesktop::windows(ProcessID process) {
    std::vector<std::unique_ptr<AccessibilityWindow>> owned;
    for (const auto window : windowsOf(process)) {
        owned.push_back(std::make_unique<AccessibleWindow>(*this, window));
    }
    return owned;
}

void ScriptedDesktop::changeAccessibilityTrust(bool trusted) {
    accessibilityTrusted = trusted;
    trustChanged_.emit();
}

void ScriptedDesktop::movePointer(double dx, std::uint32_t modifierFlags, Target target) {
    send({.type = EventType::mouseMoved, .modifierFlags = modifierFlags, .deltaX = dx}, target);
}

bool ScriptedDesktop::pressKey(std::uint16_t keyCode, std::uint32_t modifierFlags, Target target) {
    return send({.type = EventType::keyDown, .modifierFlags = modifierFlags, .keyCode = keyCode},
                target);
}

int ScriptedDesktop::monitorCount(EventMask mask) const {
    return static_cast<int>(std::ranges::count_if(
        monitors_, [mask](const auto &monitor) { return (monitor->mask & mask) != 0; }));
}

bool ScriptedDesktop::send(const InputEvent &event, Target target) {
    const auto monitors = monitors_; // a copy: handlers add and release monitors
    return std::ranges::any_of(monitors, [&](const auto &monitor) {
        const bool isLive = std::ranges::find(monitors_, monitor) != monitors_.end();
        return isLive && monitor->target == target &&
               (monitor->mask & eventMask(event.type)) != 0 && monitor->handler(event);
    });
}

Handle ScriptedDesktop::addMonitor(Monitor monitor) {
    const auto added = std::make_shared<Monitor>(std::move(monitor));
    monitors_.push_back(added);
    return Handle([this, added] { monitors_.remove(added); });
}

Handle ScriptedDesktop::addGlobalMonitor(EventMask mask,
                                         std::function<void(const InputEvent &)> handler) {
    return addMonitor(
        {mask, Target::otherProgram, [handler = std::move(handler)](const auto &event) {
             handler(event);
             return false;
         }});
}

Handle ScriptedDesktop::addLocalMonitor(EventMask mask,
                                        std::function<bool(const InputEvent &)> handler) {
    return addMonitor({mask, Target::lumo, std::move(handler)});
}

void ScriptedDesktop::add(const UserNotification &notification,
                          std::function<void(const std::optional<std::string> &)> completion) {
    if (!notificationError) {
        notifications.push_back(notification);
    }
    mainLoop.post(
        [completion = std::move(completion), error = notificationError] { completion(error); });
}

std::string ScriptedDesktop::keyName(std::int64_t keyCode) const {
    const auto renamed = keyNames_.find(keyCode);
    return renamed != keyNames_.end() ? renamed->second : macos::AnsiKeyboard().keyName(keyCode);
}

void ScriptedDesktop::changeKeyNames(std::map<std::int64_t, std::string> names) {
    keyNames_ = std::move(names);
    keyNamesChanged_.emit();
}

Handle ScriptedDesktop::installEventHandler(std::function<void(const HotKeyEvent &)> handler) {
    return hotKeyEvents_.subscribe(std::move(handler));
}

Handle ScriptedDesktop::registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, HotKeyID id,
                                       std::function<void(HotKeyStatus)> outcome) {
    const bool isTaken =
        std::ranges::find(keyCodesTakenByOthers, keyCode) != keyCodesTakenByOthers.end();
    const HotKey hotKey{keyCode, modifiers, id};
    const auto held = std::make_shared<std::function<void(HotKeyStatus)>>(std::move(outcome));
    if (isTaken) {
        refusedHotKeys_.push_back({hotKey, held});
    } else {
        hotKeys_.push_back(hotKey);
    }
    const auto answer = [pending = std::weak_ptr(held), isTaken] {
        if (const auto call = pending.lock()) {
            (*call)(isTaken ? HotKeyStatus::alreadyTaken : HotKeyStatus::success);
        }
    };
    if (answersHotKeysLater) {
        mainLoop.post(answer);
    } else {
        answer();
    }
    return Handle([this, id, held] {
        std::erase_if(hotKeys_, [id](const HotKey &each) { return each.id == id; });
    });
}

void ScriptedDesktop::releaseKeysOfOthers() {
    keyCodesTakenByOthers.clear();
    for (const auto &[hotKey, outcome] : std::exchange(refusedHotKeys_, {})) {
        if (const auto call = outcome.lock()) {
            hotKeys_.push_back(hotKey);
            (*call)(HotKeyStatus::success);
        }
    }
}

void ScriptedDesktop::sendHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                 HotKeyEventKind kind) {
    for (const auto &hotKey : std::vector(hotKeys_)) {
        if (hotKey.keyCode == keyCode && hotKey.modifiers == modifiers) {
            hotKeyEvents_.emit({hotKey.id, kind});
        }
    }
}

void ScriptedDesktop::changeDefaults(const std::map<std::string, Value, std::less<>> &values) {
    std::vector<std::string> keys;
    for (const auto &[key, value] : values) {
        defaults.insert_or_assign(key, value);
        keys.push_back(key);
    }
    defaultsChanged_.emit(keys);
}

std::optional<Value> ScriptedDesktop::object(std::string_view key) const {
    const auto found = defaults.find(key);
    return found == defaults.end() ? std::nullopt : std::optional(found->second);
}

} // namespace lumo::test
