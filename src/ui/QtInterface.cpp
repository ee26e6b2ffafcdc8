#include "ui/QtInterface.h"

#include "platform/Appearance.h"
#include "platform/EventMonitors.h"
#include "platform/MainLoop.h"
#include "platform/Screens.h"
#include "platform/Workspace.h"
#include "ui/GuidedAccessView.h"
#include "ui/HostedFrames.h"
#include "ui/LumoStyle.h"
#include "ui/MessageView.h"
#include "ui/PopoverWindow.h"
#include "ui/ProgramIcon.h"
#include "ui/ScreenPlaces.h"
#include "ui/ScreenReaderSupport.h"
#include "ui/SettingsView.h"
#include "ui/Text.h"
#include "ui/Theme.h"
#include "ui/WindowFrame.h"

#include <QAbstractEventDispatcher>
#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QLocale>
#include <QPixmapCache>
#include <QPlatformSurfaceEvent>
#include <QScreen>
#include <QWindow>
#include <algorithm>
#include <array>
#include <clocale>
#include <utility>

namespace lumo {

namespace {

// Seconds after which what was closed is not opened again at once.
constexpr double unusedDelay = 2;

} // namespace

// The toolkit from its start to its end.
class QtInterface::Toolkit final : public QObject, private QAbstractNativeEventFilter {
  public:
    Toolkit(const ToolkitHooks &hooks, const std::string &desktopEntry)
        : hooks_(hooks)
        , windowSystem_(hooks.windowSystem)
        , arguments_{name_.data(), option_.data(), windowSystem_.data()}
        , argumentCount_(windowSystem_.empty() ? 1 : 3)
        , application_(argumentCount_, arguments_.data())
        , toolkitScheme_(schemeOf(QApplication::palette())) {
        // The toolkit puts the user's locale in force, which must not change how numbers are
        // written to files.
        std::setlocale(LC_NUMERIC, "C"); // NOLINT(concurrency-mt-unsafe): before any formatting
        QApplication::setQuitOnLastWindowClosed(false);
        QApplication::setApplicationName(QStringLiteral("lumo"));
        QApplication::setApplicationDisplayName(QString());
        QApplication::setDesktopFileName(QString::fromStdString(desktopEntry));
        QApplication::setLayoutDirection(QLocale::system().textDirection());
        if (hooks_.viewHost == nullptr) {
            QApplication::setWindowIcon(programIcon());
        }
        // NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks): the application owns it
        QApplication::setStyle(new LumoStyle);
        if (hooks_.handleNativeEvent) {
            // NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
            application_.installNativeEventFilter(this);
        }
        if (hooks_.noteWindow || hooks_.handleKeyPress) {
            application_.installEventFilter(this);
        }
        if (hooks_.noteDesktopLost) {
            lostHandler = hooks_.noteDesktopLost;
            previousHandler = qInstallMessageHandler(handleMessage);
        }
        if (hooks_.turnLoopBy) {
            turning_ = hooks_.turnLoopBy([] {
                QAbstractEventDispatcher::instance()->processEvents(QEventLoop::WaitForMoreEvents);
            });
        }
        if (hooks_.appearance != nullptr) {
            appearanceChanges_ = hooks_.appearance->onChange([this] { applyScheme(); });
        }
        applyScheme();
    }

    ~Toolkit() override {
        if (previousHandler != nullptr) {
            qInstallMessageHandler(previousHandler);
            lostHandler = nullptr;
        }
    }
    Toolkit(const Toolkit &) = delete;
    Toolkit &operator=(const Toolkit &) = delete;

  private:
    bool nativeEventFilter(const QByteArray & /*type*/, void *event,
                           qintptr * /*result*/) override {
        return hooks_.handleNativeEvent(event);
    }

    bool eventFilter(QObject *object, QEvent *event) override {
        if (hooks_.handleKeyPress && event->type() == QEvent::KeyPress && object->isWindowType()) {
            return handleKeyPress(dynamic_cast<QKeyEvent &>(*event));
        }
        if (hooks_.noteWindow && event->type() == QEvent::PlatformSurface &&
            dynamic_cast<QPlatformSurfaceEvent &>(*event).surfaceEventType() ==
                QPlatformSurfaceEvent::SurfaceCreated) {
            if (const auto *window = qobject_cast<QWindow *>(object)) {
                hooks_.noteWindow(window->winId());
            }
        }
        return false;
    }

    bool handleKeyPress(const QKeyEvent &event) const {
        static constexpr std::array<std::pair<Qt::KeyboardModifier, std::uint32_t>, 4> flags = {{
            {Qt::MetaModifier, modifierFlag::command},
            {Qt::AltModifier, modifierFlag::option},
            {Qt::ControlModifier, modifierFlag::control},
            {Qt::ShiftModifier, modifierFlag::shift},
        }};
        std::uint32_t modifiers = 0;
        for (const auto &[modifier, flag] : flags) {
            modifiers |= event.modifiers().testFlag(modifier) ? flag : 0;
        }
        return !event.isAutoRepeat() && hooks_.handleKeyPress(event.nativeScanCode(), modifiers);
    }

    // By its last line, which is the only sign, and is said in the program's own way.
    static void handleMessage(QtMsgType type, const QMessageLogContext &context,
                              const QString &message) {
        if (message.startsWith(QLatin1String("The Wayland connection "))) {
            lostHandler();
        } else {
            previousHandler(type, context, message);
        }
    }

    void applyScheme() {
        const auto prefersDark =
            hooks_.appearance != nullptr ? hooks_.appearance->prefersDark() : std::nullopt;
        const auto scheme = !prefersDark   ? toolkitScheme_
                            : *prefersDark ? ColorScheme::dark
                                           : ColorScheme::light;
        QApplication::setPalette(makePalette(scheme));
    }

    // NOLINTBEGIN(*-non-const-global-variables): the toolkit's handler is given nothing to hold
    // them
    static inline std::function<void()> lostHandler;
    static inline QtMessageHandler previousHandler = nullptr;
    // NOLINTEND(*-non-const-global-variables)

    const ToolkitHooks &hooks_;
    std::string name_ = "lumo";
    std::string option_ = "-platform";
    std::string windowSystem_;
    std::array<char *, 4> arguments_;
    int argumentCount_;
    QApplication application_;
    ScreenReaderSupport screenReaderSupport_;
    ColorScheme toolkitScheme_;
    Handle turning_;
    Handle appearanceChanges_;
};

class QtInterface::Window final : public InterfaceWindow {
  public:
    Window(QtInterface &interface, std::unique_ptr<WindowFrame> frame)
        : interface_(interface)
        , frame_(std::move(frame)) {}

    ~Window() override {
        frame_->onWillClose = nullptr;
        interface_.discard(std::move(frame_));
    }
    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;

    void makeKeyAndOrderFront() override { frame_->makeKeyAndOrderFront(); }

  private:
    QtInterface &interface_;
    std::unique_ptr<WindowFrame> frame_;
};

class QtInterface::StatusPopover final : public Popover {
  public:
    StatusPopover(QtInterface &interface, StatusMenu &menu)
        : interface_(interface)
        , menu_(menu) {}

    ~StatusPopover() override { close(); }
    StatusPopover(const StatusPopover &) = delete;
    StatusPopover &operator=(const StatusPopover &) = delete;

    bool isShown() const override { return window_ != nullptr; }

    void show(const StatusItemPlace &place) override {
        close();
        interface_.startToolkit();
        menu_.prepareToShow();
        const auto &hooks = interface_.hooks_;
        window_ = std::make_unique<PopoverWindow>(interface_.platform_, menu_,
                                                  hooks.preparePopover ? PopoverWindow::Form::window
                                                                       : PopoverWindow::Form::popup,
                                                  hooks.blendsWindows && hooks.blendsWindows());
        window_->onDismiss = [this] { close(); };
        if (hooks.preparePopover) {
            const auto size = StatusMenuView::contentSize;
            hooks.preparePopover(
                PopoverWindow::title, place,
                {static_cast<double>(size.width()), static_cast<double>(size.height())},
                corner::card);
            window_->open();
            return;
        }
        const auto anchor = anchorOf(place);
        buttons_ = {};
        if (hooks.watchButtons) {
            buttons_ = hooks.watchButtons([this](unsigned button, bool isDown) {
                window_->handleButton(button, isDown, QCursor::pos());
            });
        }
        // Where only the pointer is known, the item is around it.
        constexpr int reach = 16;
        const auto item =
            place.item ? anchor.area : anchor.area.adjusted(-reach, -reach, reach, reach);
        window_->open({popoverArea(anchor, StatusMenuView::contentSize), item},
                      static_cast<bool>(buttons_));
    }

    void close() override {
        if (window_) {
            window_->onDismiss = [] {};
            buttons_.reset();
            interface_.discard(std::move(window_));
        }
    }

  private:
    ToolkitPlace anchorOf(const StatusItemPlace &place) const {
        std::vector<ToolkitScreen> toolkitScreens;
        for (const auto *screen : QGuiApplication::screens()) {
            toolkitScreens.push_back({screen->geometry(), screen->devicePixelRatio()});
        }
        const auto &screens = interface_.platform_.screens.screens();
        if (screens.empty() || toolkitScreens.empty()) {
            return {QRect(QCursor::pos(), QSize()), QRect(QPoint(), StatusMenuView::contentSize)};
        }
        return toolkitPlace(place, screens, toolkitScreens);
    }

    QtInterface &interface_;
    StatusMenu &menu_;
    std::unique_ptr<PopoverWindow> window_;
    Handle buttons_;
};

QtInterface::QtInterface(const Platform &platform, ToolkitHooks hooks)
    : platform_(platform)
    , hooks_(std::move(hooks)) {
}

QtInterface::~QtInterface() {
    message_.reset();
    discarded_.clear();
}

void QtInterface::startToolkit() {
    unused_.reset();
    if (!toolkit_) {
        toolkit_ = std::make_unique<Toolkit>(
            hooks_, platform_.workspace.ownApplication().bundleIdentifier.value_or(""));
    }
}

void QtInterface::discard(std::unique_ptr<QWidget> window) {
    window->hide();
    discarded_.push_back(std::move(window));
    platform_.mainLoop.post(lifetime_.guard([this] {
        discarded_.clear();
        // What the toolkit itself wants deleted later waits for a loop of its own, which never
        // runs.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        noteWhenUnused();
    }));
}

void QtInterface::noteWhenUnused() {
    if (hooks_.noteUnused &&
        std::ranges::none_of(QApplication::topLevelWidgets(), &QWidget::isVisible)) {
        QPixmapCache::clear();
        unused_ = platform_.mainLoop.after(unusedDelay, hooks_.noteUnused);
    }
}

std::unique_ptr<Popover> QtInterface::makePopover(StatusMenu &menu) {
    if (hooks_.viewHost == nullptr) {
        return std::make_unique<StatusPopover>(*this, menu);
    }
    const auto makeView = [this, &menu] {
        startToolkit();
        menu.prepareToShow();
        auto view = std::make_unique<StatusMenuView>(menu, platform_.mainLoop);
        view->resize(StatusMenuView::contentSize);
        return view;
    };
    return makeHostedPopover(*hooks_.viewHost, makeView,
                             [this](std::unique_ptr<QWidget> view) { discard(std::move(view)); });
}

std::unique_ptr<InterfaceWindow> QtInterface::makeWindow(const char *title, QWidget *view,
                                                         HostedWindowKind kind,
                                                         std::function<void()> onWillClose) {
    if (hooks_.viewHost != nullptr) {
        return makeHostedWindow(
            *hooks_.viewHost, kind, title, std::unique_ptr<QWidget>(view), std::move(onWillClose),
            [this](std::unique_ptr<QWidget> done) { discard(std::move(done)); });
    }
    auto frame = std::make_unique<WindowFrame>(QString::fromUtf8(title), view,
                                               kind == HostedWindowKind::settings);
    frame->onWillClose = std::move(onWillClose);
    return std::make_unique<Window>(*this, std::move(frame));
}

std::unique_ptr<InterfaceWindow>
QtInterface::makeSettingsWindow(const SettingsModel &model, std::function<void()> onWillClose) {
    startToolkit();
    return makeWindow("Lumo Settings", new SettingsView(model), HostedWindowKind::settings,
                      std::move(onWillClose));
}

std::unique_ptr<InterfaceWindow>
QtInterface::makeGuidanceWindow(const GuidanceModel &model, std::function<void()> onWillClose) {
    startToolkit();
    return makeWindow("Lumo", new GuidedAccessView(model), HostedWindowKind::guidance,
                      std::move(onWillClose));
}

void QtInterface::showMessage(const std::string &title, const std::string &text) {
    startToolkit();
    const auto dismiss = [this] { message_.reset(); };
    message_ = makeWindow("Lumo", new MessageView(title, text, dismiss), HostedWindowKind::guidance,
                          dismiss);
    message_->makeKeyAndOrderFront();
}

} // namespace lumo
