#import "platform/macos/MacOverlayWindow.h"

#import "platform/macos/NativeValues.h"
#include "platform/macos/logic/WindowFlags.h"
#include "platform/macos/logic/WindowOrder.h"

#include <unistd.h>

namespace lumo::macos {

static_assert(styleMask::overlay ==
              (NSWindowStyleMaskNonactivatingPanel | NSWindowStyleMaskFullSizeContentView));
static_assert(collectionBehavior::overlay ==
              (NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorManaged |
               NSWindowCollectionBehaviorTransient));
static_assert(animationBehaviorNone == NSWindowAnimationBehaviorNone);

namespace {

NSScreen *screenWithFrame(CGRect frame) {
    for (NSScreen *screen in [NSScreen screens]) {
        if (CGRectEqualToRect(screen.frame, frame)) {
            return screen;
        }
    }
    return nil;
}

LumoOverlayWindow *makeOverlay(CGRect frame) {
    LumoOverlayWindow *window =
        [[LumoOverlayWindow alloc] initWithContentRect:frame
                                             styleMask:styleMask::overlay
                                               backing:NSBackingStoreBuffered
                                                 defer:NO
                                                screen:screenWithFrame(frame)];
    window.level = NSNormalWindowLevel;
    window.opaque = NO;
    window.backgroundColor = [NSColor clearColor];
    window.hasShadow = NO;
    window.ignoresMouseEvents = YES;
    window.collectionBehavior = collectionBehavior::overlay;
    window.animationBehavior = NSWindowAnimationBehaviorNone;
    window.releasedWhenClosed = NO;
    // The origin that the window was made with counts from its screen.
    [window setFrame:frame display:YES];
    window.titlebarAppearsTransparent = YES;
    window.titleVisibility = NSWindowTitleHidden;
    window.movableByWindowBackground = NO;
    window.contentView =
        [[NSView alloc] initWithFrame:CGRectMake(0, 0, frame.size.width, frame.size.height)];
    return window;
}

} // namespace

MacOverlayWindow::MacOverlayWindow(MacOverlayWindows &overlays, const Rect &frame)
    : overlays_(overlays)
    , window_(makeOverlay(nativeRect(frame)))
    , listedNumber_(static_cast<std::uint32_t>(window_.windowNumber))
    , renderer_(window_.contentView, overlays.log_) {
    overlays_.numbers_.insert(listedNumber_);
}

MacOverlayWindow::~MacOverlayWindow() {
    overlays_.numbers_.erase(listedNumber_);
    [window_ orderOut:nil];
    [window_ close];
}

std::int64_t MacOverlayWindow::windowNumber() const {
    return window_.windowNumber;
}

Rect MacOverlayWindow::frame() const {
    return rectOf(window_.frame);
}

void MacOverlayWindow::setFrame(const Rect &frame) {
    [window_ setFrame:nativeRect(frame) display:YES];
}

int MacOverlayWindow::level() const {
    return static_cast<int>(window_.level);
}

void MacOverlayWindow::setLevel(int level) {
    window_.level = level;
}

double MacOverlayWindow::alphaValue() const {
    return window_.alphaValue;
}

void MacOverlayWindow::setAlphaValue(double alpha) {
    window_.alphaValue = alpha;
}

// The list is that of the tick which asks; what moved since is put right by the next one.
void MacOverlayWindow::orderFront() {
    const auto records = overlays_.windowServer_.lastRead();
    const auto own = records ? lowestInFront(*records, overlays_.numbers_, getpid()) : std::nullopt;
    if (own) {
        orderBelow(*own);
    } else if (!window_.visible || !records ||
               !liesInFront(*records, overlays_.numbers_, listedNumber_)) {
        [window_ orderFront:nil];
    }
}

void MacOverlayWindow::orderBelow(std::uint32_t windowNumber) {
    const auto records = overlays_.windowServer_.lastRead();
    if (!window_.visible || !records ||
        !liesBelow(*records, overlays_.numbers_, listedNumber_, windowNumber)) {
        [window_ orderWindow:NSWindowBelow relativeTo:static_cast<NSInteger>(windowNumber)];
    }
}

void MacOverlayWindow::orderOut() {
    [window_ orderOut:nil];
}

std::optional<double> MacOverlayWindow::backingScaleFactor() const {
    NSScreen *screen = window_.screen != nil ? window_.screen : [NSScreen mainScreen];
    return screen != nil ? std::optional<double>(screen.backingScaleFactor) : std::nullopt;
}

void MacOverlayWindow::commit(const LayerTree &tree) {
    renderer_.show(tree);
}

MacOverlayWindows::MacOverlayWindows(const MacWindowServer &windowServer, const Log &log)
    : windowServer_(windowServer)
    , log_(log) {
}

std::unique_ptr<PlatformWindow> MacOverlayWindows::makeWindow(const Rect &frame) {
    return std::make_unique<MacOverlayWindow>(*this, frame);
}

} // namespace lumo::macos
