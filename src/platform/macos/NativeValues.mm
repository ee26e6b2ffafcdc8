#import "platform/macos/NativeValues.h"

#include "platform/macos/logic/NativeNumber.h"

#import <CoreFoundation/CoreFoundation.h>

namespace lumo::macos {

NSString *nativeString(std::string_view text) {
    NSString *string = [[NSString alloc] initWithBytes:text.data()
                                                length:text.size()
                                              encoding:NSUTF8StringEncoding];
    return string != nil ? string : @"";
}

std::string text(NSString *string) {
    const char *characters = string.UTF8String;
    return characters != nullptr ? characters : "";
}

std::optional<std::string> optionalText(NSString *string) {
    return string != nil ? std::optional(text(string)) : std::nullopt;
}

static Value valueOfNumber(NSNumber *number) {
    const bool isBoolean = CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID();
    return valueOf(NativeNumber{.kind = kindOfNumber(number.objCType, isBoolean),
                                .signedInteger = number.longLongValue,
                                .unsignedInteger = number.unsignedLongLongValue,
                                .floatingPoint = number.doubleValue});
}

std::optional<Value> valueOf(id object) {
    if ([object isKindOfClass:[NSNumber class]]) {
        return valueOfNumber(object);
    }
    if ([object isKindOfClass:[NSString class]]) {
        return Value(text(object));
    }
    if ([object isKindOfClass:[NSData class]]) {
        NSData *data = object;
        const auto *bytes = static_cast<const std::uint8_t *>(data.bytes);
        return Value(Bytes(bytes, bytes + data.length));
    }
    return std::nullopt;
}

id nativeObject(const Value &value) {
    if (const auto boolean = value.boolean()) {
        return *boolean ? @YES : @NO;
    }
    if (const auto integer = value.integer()) {
        return [NSNumber numberWithLongLong:*integer];
    }
    if (const auto real = value.real()) {
        return [NSNumber numberWithDouble:*real];
    }
    if (const auto *string = value.string()) {
        return nativeString(*string);
    }
    const auto &data = *value.data();
    return [NSData dataWithBytes:data.data() length:data.size()];
}

Rect rectOf(CGRect rect) {
    return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

CGRect nativeRect(const Rect &rect) {
    return CGRectMake(rect.x, rect.y, rect.width, rect.height);
}

NSColor *nativeColor(const Color &color) {
    if (color == Color::clear()) {
        return [NSColor clearColor];
    }
    if (color == Color::black()) {
        return [NSColor blackColor];
    }
    if (color == Color::white()) {
        return [NSColor whiteColor];
    }
    return [NSColor colorWithCalibratedRed:color.red
                                     green:color.green
                                      blue:color.blue
                                     alpha:color.alpha];
}

} // namespace lumo::macos
