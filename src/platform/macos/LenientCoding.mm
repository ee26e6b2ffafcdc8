#import "platform/macos/LenientCoding.h"

#import "platform/macos/NativeValues.h"

namespace lumo::macos {

LenientCoding::LenientCoding(const Log &log)
    : log_(log) {
}

void LenientCoding::set(id object, std::string_view key, id value) {
    @try {
        [object setValue:value forKey:nativeString(key)];
    } @catch (NSException *exception) {
        if (refused_.emplace(key).second) {
            log_.print("[Lumo] Layers do without the key " + std::string(key) + ": " +
                       text(exception.reason));
        }
    }
}

} // namespace lumo::macos
