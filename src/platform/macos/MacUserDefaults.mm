#import "platform/macos/MacUserDefaults.h"

#import "platform/macos/NativeValues.h"

#import <Foundation/Foundation.h>

namespace lumo::macos {

std::optional<Value> MacUserDefaults::object(std::string_view key) const {
    NSUserDefaults *defaults = [NSUserDefaults standardUserDefaults];
    NSString *name = nativeString(key);
    id object = [defaults objectForKey:name];
    if ([object isKindOfClass:[NSString class]]) {
        return valueOf([defaults stringForKey:name]);
    }
    if ([object isKindOfClass:[NSData class]]) {
        return valueOf([defaults dataForKey:name]);
    }
    return valueOf(object);
}

void MacUserDefaults::setBool(std::string_view key, bool value) {
    [[NSUserDefaults standardUserDefaults] setBool:value forKey:nativeString(key)];
}

void MacUserDefaults::setInteger(std::string_view key, std::int64_t value) {
    [[NSUserDefaults standardUserDefaults] setInteger:value forKey:nativeString(key)];
}

void MacUserDefaults::setDouble(std::string_view key, double value) {
    [[NSUserDefaults standardUserDefaults] setDouble:value forKey:nativeString(key)];
}

void MacUserDefaults::setString(std::string_view key, const std::string &value) {
    [[NSUserDefaults standardUserDefaults] setObject:nativeString(value) forKey:nativeString(key)];
}

void MacUserDefaults::setData(std::string_view key, const Bytes &value) {
    [[NSUserDefaults standardUserDefaults] setObject:nativeObject(Value(value))
                                              forKey:nativeString(key)];
}

// Writing no object removes the key.
void MacUserDefaults::removeObject(std::string_view key) {
    [[NSUserDefaults standardUserDefaults] setObject:nil forKey:nativeString(key)];
}

} // namespace lumo::macos
