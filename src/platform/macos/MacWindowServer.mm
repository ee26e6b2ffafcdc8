#import "platform/macos/MacWindowServer.h"

#import "platform/macos/NativeValues.h"
#include "platform/macos/logic/WindowFlags.h"
#include "platform/macos/logic/WindowRecord.h"

#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

namespace lumo::macos {

static_assert(windowListOption::onScreenOnly == kCGWindowListOptionOnScreenOnly);
static_assert(windowListOption::excludeDesktopElements == kCGWindowListExcludeDesktopElements);

namespace {

template <std::size_t Count>
NSArray<NSString *> *nativeKeys(const std::array<RecordField, Count> &fields) {
    NSMutableArray<NSString *> *keys = [NSMutableArray arrayWithCapacity:Count];
    for (const auto &field : fields) {
        [keys addObject:nativeString(field.key)];
    }
    return keys;
}

FieldReader reader(NSDictionary<NSString *, id> *dictionary, NSArray<NSString *> *keys) {
    return [dictionary, keys](std::size_t field) {
        return valueOf([dictionary objectForKey:[keys objectAtIndex:field]]);
    };
}

Dictionary recordOf(NSDictionary<NSString *, id> *window) {
    static NSArray<NSString *> *const windowKeys = nativeKeys(windowFields);
    static NSArray<NSString *> *const boundsKeys = nativeKeys(boundsFields);
    const auto fields = reader(window, windowKeys);
    id bounds = [window objectForKey:(__bridge NSString *)kCGWindowBounds];
    if (![bounds isKindOfClass:[NSDictionary class]]) {
        return windowRecord(fields, nullptr);
    }
    const auto sides = reader(bounds, boundsKeys);
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
