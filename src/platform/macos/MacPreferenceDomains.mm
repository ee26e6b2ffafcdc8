#import "platform/macos/MacPreferenceDomains.h"

#import "platform/macos/NativeValues.h"

#import <CoreFoundation/CoreFoundation.h>

namespace lumo::macos {

std::optional<Value> MacPreferenceDomains::value(std::string_view key,
                                                 std::string_view domain) const {
    return valueOf(CFBridgingRelease(CFPreferencesCopyValue(
        (__bridge CFStringRef)nativeString(key), (__bridge CFStringRef)nativeString(domain),
        kCFPreferencesCurrentUser, kCFPreferencesCurrentHost)));
}

} // namespace lumo::macos
