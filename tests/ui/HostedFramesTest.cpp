#include "ui/HostedFrames.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <QTest>
#include <QWidget>
#include <QWindow>
#include <utility>

namespace lumo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A desktop that draws the frames, and what it was asked for.
class ScriptedViewHost final : public ViewHost {
  public:
    std::unique_ptr<HostedPopover> makePopover(const HostedView &view,
                                               std::function<void()> onDidClose) override {
        hosted = view;
        userClosesPopover = std::move(onDidClose);
        return std::make_unique<Frame>(*this);
    }
    std::unique_ptr<HostedWindow> makeWindow(HostedWindowKind /*kind*/, const std::string &title,
                                             const HostedView &view,
                                             std::function<void()> onWillClose) override {
        hosted = view;
        events.push_back(title);
        userClosesWindow = std::move(onWillClose);
        return std::make_unique<Frame>(*this);
    }

    QWidget *view() const { return QWidget::find(reinterpret_cast<WId>(hosted.nativeView)); }

    HostedView hosted;
    QWidget frameInFocus; // until the view is given the focus
    std::vector<std::string> events;
    std::function<void()> userClosesPopover;
    std::function<void()> userClosesWindow;

  private:
    class Frame final : public HostedPopover, public HostedWindow {
      public:
        explicit Frame(ScriptedViewHost &host)
            : host_(host) {}
        ~Frame() override { host_.events.emplace_back("gone"); }
        Frame(const Frame &) = delete;
        Frame &operator=(const Frame &) = delete;

        bool isShown() const override { return isShown_; }
        void show() override {
            EXPECT_FALSE(host_.view()->isVisible()) << "a view outside of a window opens one";
            isShown_ = true;
            host_.events.emplace_back("shown");
        }
        void close() override { isShown_ = false; }
        void makeKeyAndOrderFront() override {
            EXPECT_TRUE(host_.view()->isVisible());
            host_.frameInFocus.show();
            host_.frameInFocus.activateWindow();
            host_.events.emplace_back("shown");
        }

      private:
        ScriptedViewHost &host_;
        bool isShown_ = false;
    };
};

class HostedFramesTest : public testing::Test {
  protected:
    static std::unique_ptr<QWidget> makeView() {
        auto view = std::make_unique<QWidget>();
        view->resize(260, 300);
        return view;
    }
    static bool getsKeys(const QWidget &view) {
        return QTest::qWaitFor(
            [&] { return QGuiApplication::focusWindow() == view.windowHandle(); });
    }
    // The view's frame must be gone by then.
    DiscardView discarding() {
        return [this](std::unique_ptr<QWidget> view) {
            EXPECT_TRUE(view);
            host.events.emplace_back("discarded");
        };
    }

    ScriptedViewHost host;
};

TEST_F(HostedFramesTest, PopoverHasAViewWhileItIsShown) {
    const auto popover = makeHostedPopover(host, makeView, discarding());
    EXPECT_THAT(host.events, IsEmpty());
    popover->show({});
    EXPECT_TRUE(popover->isShown());
    ASSERT_NE(host.view(), nullptr);
    EXPECT_TRUE(host.view()->isVisible());
    EXPECT_EQ(host.hosted.size, (Size{260, 300}));
    host.userClosesPopover();
    EXPECT_FALSE(popover->isShown());
    EXPECT_THAT(std::exchange(host.events, {}), ElementsAre("shown", "gone", "discarded"));
    popover->show({});
    popover->close();
    popover->close();
    EXPECT_THAT(host.events, ElementsAre("shown", "gone", "discarded"));
}

TEST_F(HostedFramesTest, WindowMayBeDestroyedByItsOwnClosing) {
    std::unique_ptr<InterfaceWindow> window;
    window = makeHostedWindow(
        host, HostedWindowKind::settings, "Lumo Settings", makeView(), [&] { window.reset(); },
        discarding());
    window->makeKeyAndOrderFront();
    EXPECT_TRUE(getsKeys(*host.view()));
    EXPECT_EQ(host.hosted.size, (Size{260, 300}));
    const auto close = host.userClosesWindow;
    close();
    EXPECT_EQ(window, nullptr);
    EXPECT_THAT(host.events, ElementsAre("Lumo Settings", "shown", "gone", "discarded"));
}

} // namespace
} // namespace lumo
