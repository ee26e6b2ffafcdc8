#import "platform/macos/MacViewHost.h"

#import "platform/macos/MacStatusItem.h"
#import "platform/macos/NativeValues.h"
#import "platform/macos/NotificationObserver.h"
#include "platform/macos/logic/WindowFlags.h"

#import <AppKit/AppKit.h>
#import <dispatch/dispatch.h>

#include <utility>

namespace lumo::macos {

static_assert(styleMask::guidance == (NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                      NSWindowStyleMaskFullSizeContentView));
static_assert(styleMask::settings == (NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                                      NSWindowStyleMaskMiniaturizable));
static_assert(NSPopoverBehaviorTransient == 1 && NSMinYEdge == 1);
static_assert(autoresizing::both == (NSViewWidthSizable | NSViewHeightSizable));

namespace {

// A view of our own around the toolkit's, which fills it.
NSView *hostingView(const HostedView &hosted) {
    const CGRect bounds = CGRectMake(0, 0, hosted.size.width, hosted.size.height);
    NSView *container = [[NSView alloc] initWithFrame:bounds];
    NSView *view = (__bridge NSView *)hosted.nativeView;
    view.frame = bounds;
    view.autoresizingMask = autoresizing::both;
    [container addSubview:view];
    return container;
}

// What is released from within one of its own events or notifications is used by its callers until
// they return.
void keepUntilLater(id object) {
    dispatch_async(dispatch_get_main_queue(), ^{
        (void)object;
    });
}

class MacPopover final : public HostedPopover {
  public:
    MacPopover(const MacStatusItem &statusItem, const HostedView &view,
               std::function<void()> onDidClose)
        : statusItem_(statusItem)
        , popover_([[NSPopover alloc] init]) {
        popover_.contentSize = NSMakeSize(view.size.width, view.size.height);
        popover_.behavior = NSPopoverBehaviorTransient;
        NSViewController *controller = [[NSViewController alloc] initWithNibName:nil bundle:nil];
        controller.view = hostingView(view);
        popover_.contentViewController = controller;
        closing_ =
            observeNotification([NSNotificationCenter defaultCenter], NSPopoverDidCloseNotification,
                                popover_, std::move(onDidClose));
    }

    // At once, since the view goes now.
    ~MacPopover() override {
        closing_.reset();
        popover_.animates = NO;
        close();
        keepUntilLater(popover_);
    }
    MacPopover(const MacPopover &) = delete;
    MacPopover &operator=(const MacPopover &) = delete;

    bool isShown() const override { return popover_.shown; }

    void show() override {
        NSView *button = statusItem_.button();
        // Without a window around the button that would raise an exception.
        if (button.window != nil) {
            [popover_ showRelativeToRect:button.bounds ofView:button preferredEdge:NSMinYEdge];
        }
    }

    void close() override { [popover_ close]; }

  private:
    const MacStatusItem &statusItem_;
    NSPopover *popover_;
    Handle closing_;
};

class MacHostedWindow final : public HostedWindow {
  public:
    MacHostedWindow(NSUInteger style, const std::string &title, const HostedView &view,
                    std::function<void()> onWillClose) {
        const NSRect content = NSMakeRect(0, 0, view.size.width, view.size.height);
        window_ = [[NSWindow alloc] initWithContentRect:content
                                              styleMask:style
                                                backing:NSBackingStoreBuffered
                                                  defer:NO];
        window_.title = nativeString(title);
        window_.contentView = hostingView(view);
        window_.movableByWindowBackground = YES;
        [window_ center];
        window_.releasedWhenClosed = NO;
        closing_ =
            observeNotification([NSNotificationCenter defaultCenter], NSWindowWillCloseNotification,
                                window_, [this, onWillClose = std::move(onWillClose)] {
                                    isClosing_ = true;
                                    onWillClose();
                                });
    }

    // A window that is being closed is not to be closed once more.
    ~MacHostedWindow() override {
        closing_.reset();
        if (!isClosing_) {
            [window_ close];
        }
        keepUntilLater(window_);
    }
    MacHostedWindow(const MacHostedWindow &) = delete;
    MacHostedWindow &operator=(const MacHostedWindow &) = delete;

    void makeKeyAndOrderFront() override {
        if ([window_ isMiniaturized]) {
            [window_ deminiaturize:nil];
        }
        [window_ makeKeyAndOrderFront:nil];
    }

  private:
    NSWindow *window_;
    bool isClosing_ = false;
    Handle closing_;
};

} // namespace

MacViewHost::MacViewHost(const MacStatusItem &statusItem)
    : statusItem_(statusItem) {
}

std::unique_ptr<HostedPopover> MacViewHost::makePopover(const HostedView &view,
                                                        std::function<void()> onDidClose) {
    return std::make_unique<MacPopover>(statusItem_, view, std::move(onDidClose));
}

std::unique_ptr<HostedWindow> MacViewHost::makeWindow(HostedWindowKind kind,
                                                      const std::string &title,
                                                      const HostedView &view,
                                                      std::function<void()> onWillClose) {
    const auto style =
        kind == HostedWindowKind::settings ? styleMask::settings : styleMask::guidance;
    return std::make_unique<MacHostedWindow>(style, title, view, std::move(onWillClose));
}

} // namespace lumo::macos
