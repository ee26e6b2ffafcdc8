#import "platform/macos/MacApplicationStrips.h"

#import "platform/macos/NativeValues.h"
#include "platform/macos/logic/StageManager.h"

#import <CoreFoundation/CoreFoundation.h>

namespace lumo::macos {

namespace {

// Of the current user on this host.
std::optional<Value> preference(std::string_view key, std::string_view domain) {
    return valueOf(CFBridgingRelease(CFPreferencesCopyValue(
        (__bridge CFStringRef)nativeString(key), (__bridge CFStringRef)nativeString(domain),
        kCFPreferencesCurrentUser, kCFPreferencesCurrentHost)));
}

} // namespace

std::optional<bool> MacApplicationStrips::areEnabled() const {
    return stageManagerSetting(
        [](std::string_view key) { return preference(key, stageManagerDomain); });
}

bool MacApplicationStrips::areDrawnBy(const std::string &name,
                                      const std::optional<std::string> &bundleIdentifier) const {
    return isStageManager(name, bundleIdentifier);
}

} // namespace lumo::macos
