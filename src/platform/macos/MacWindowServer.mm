#import "platform/macos/MacWindowServer.h"

#import "platform/macos/NativeValues.h"
#include "platform/macos/logic/WindowDictionary.h"
#include "platform/macos/logic/WindowFlags.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

namespace lumo::macos {

static_assert(windowListOption::onScreenOnly == kCGWindowListOptionOnScreenOnly);
static_assert(windowListOption::excludeDesktopElements == kCGWindowListExcludeDesktopElements);

namespace {

template <std::size_t Count>
NSArray<NSString *> *nativeKeys(const std::array<std::string_view, Count> &keys) {
    NSMutableArray<NSString *> *native = [NSMutableArray arrayWithCapacity:Count];
    for (const auto key : keys) {
        [native addObject:nativeString(key)];
    }
    return native;
}

FieldReader reader(NSDictionary<NSString *, id> *dictionary, NSArray<NSString *> *keys) {
    return [dictionary, keys](std::size_t field) {
        return valueOf([dictionary objectForKey:[keys objectAtIndex:field]]);
    };
}

WindowRecord recordOf(NSDictionary<NSString *, id> *window) {
    static NSArray<NSString *> *const keysOfWindow = nativeKeys(windowKeys);
    static NSArray<NSString *> *const keysOfBounds = nativeKeys(boundsKeys);
    const auto fields = reader(window, keysOfWindow);
    id bounds = [window objectForKey:(__bridge NSString *)kCGWindowBounds];
    if (![bounds isKindOfClass:[NSDictionary class]]) {
        return windowRecord(fields, nullptr);
    }
    const auto sides = reader(bounds, keysOfBounds);
    return windowRecord(fields, &sides);
}

} // namespace

std::shared_ptr<const WindowRecords> MacWindowServer::onScreenWindows() const {
    @autoreleasepool {
        NSArray *windows = CFBridgingRelease(
            CGWindowListCopyWindowInfo(windowListOption::everyday, kCGNullWindowID));
        if (windows == nil) {
            last_ = nullptr;
            return nullptr;
        }
        auto records = std::make_shared<WindowRecords>();
        records->reserve(windows.count);
        for (id window in windows) {
            if (![window isKindOfClass:[NSDictionary class]]) {
                last_ = nullptr;
                return nullptr;
            }
            records->push_back(recordOf(window));
        }
        if (!last_ || *last_ != *records) {
            last_ = std::move(records);
        }
        return last_;
    }
}

} // namespace lumo::macos
