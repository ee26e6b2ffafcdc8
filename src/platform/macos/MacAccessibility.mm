#import "platform/macos/MacAccessibility.h"

#import "platform/macos/CFReference.h"

#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

#include <utility>

namespace lumo::macos {

namespace {

// Seconds that another application may take to answer. The main thread waits, and the system's own
// patience would be six.
constexpr float patience = 1;

class MacAccessibilityWindow final : public AccessibilityWindow {
  public:
    explicit MacAccessibilityWindow(CFReference<AXUIElementRef> element)
        : element_(std::move(element)) {}

    bool raise() override {
        return AXUIElementPerformAction(element_.get(), CFSTR("AXRaise")) == kAXErrorSuccess;
    }

  private:
    CFReference<AXUIElementRef> element_;
};

// Tells when another window of one application gets the focus.
class FocusedWindowObserver {
  public:
    FocusedWindowObserver(std::int32_t process, const std::function<void()> &observer)
        : observer_(observer)
        , application_(AXUIElementCreateApplication(process)) {
        AXObserverRef created = nullptr;
        if (AXObserverCreate(process, &FocusedWindowObserver::call, &created) != kAXErrorSuccess) {
            return;
        }
        axObserver_.reset(created);
        AXObserverAddNotification(created, application_.get(), CFSTR("AXFocusedWindowChanged"),
                                  this);
        CFRunLoopAddSource(CFRunLoopGetMain(), AXObserverGetRunLoopSource(created),
                           kCFRunLoopCommonModes);
    }

    ~FocusedWindowObserver() {
        if (axObserver_) {
            CFRunLoopRemoveSource(CFRunLoopGetMain(), AXObserverGetRunLoopSource(axObserver_.get()),
                                  kCFRunLoopCommonModes);
        }
    }
    FocusedWindowObserver(const FocusedWindowObserver &) = delete;
    FocusedWindowObserver &operator=(const FocusedWindowObserver &) = delete;

  private:
    static void call(AXObserverRef, AXUIElementRef, CFStringRef, void *self) {
        // Held, because the observer may end this object.
        const auto observer = static_cast<FocusedWindowObserver *>(self)->observer_;
        observer();
    }

    std::function<void()> observer_;
    CFReference<AXUIElementRef> application_;
    CFReference<AXObserverRef> axObserver_;
};

} // namespace

MacAccessibility::MacAccessibility(Workspace &workspace)
    : workspace_(workspace) {
    // In force for all elements of the process.
    const CFReference<AXUIElementRef> all(AXUIElementCreateSystemWide());
    AXUIElementSetMessagingTimeout(all.get(), patience);
}

bool MacAccessibility::isProcessTrusted() const {
    return AXIsProcessTrusted() != 0;
}

Handle MacAccessibility::onFocusedWindowDidChange(std::function<void()> observer) {
    struct Following {
        std::unique_ptr<FocusedWindowObserver> window;
        Handle activations;
    };
    auto following = std::make_shared<Following>();
    const auto follow = [this, &target = *following, observer] {
        const auto *application = workspace_.frontmostApplication();
        target.window =
            application == nullptr
                ? nullptr
                : std::make_unique<FocusedWindowObserver>(application->processIdentifier, observer);
    };
    following->activations = workspace_.onDidActivateApplication([follow, observer] {
        follow();
        observer();
    });
    follow();
    return Handle([following]() mutable { following.reset(); });
}

std::vector<std::unique_ptr<AccessibilityWindow>>
MacAccessibility::windows(std::int32_t processIdentifier) {
    const CFReference<AXUIElementRef> application(AXUIElementCreateApplication(processIdentifier));
    CFTypeRef value = nullptr;
    const AXError error =
        AXUIElementCopyAttributeValue(application.get(), CFSTR("AXWindows"), &value);
    const CFReference<CFTypeRef> owned(value);
    if (error != kAXErrorSuccess || value == nullptr || CFGetTypeID(value) != CFArrayGetTypeID()) {
        return {};
    }
    const auto array = static_cast<CFArrayRef>(value);
    std::vector<std::unique_ptr<AccessibilityWindow>> windows;
    for (CFIndex index = 0; index < CFArrayGetCount(array); ++index) {
        const auto element = static_cast<AXUIElementRef>(CFArrayGetValueAtIndex(array, index));
        if (CFGetTypeID(element) != AXUIElementGetTypeID()) {
            return {};
        }
        windows.push_back(std::make_unique<MacAccessibilityWindow>(retained(element)));
    }
    return windows;
}

} // namespace lumo::macos
