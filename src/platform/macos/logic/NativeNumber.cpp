#include "platform/macos/logic/NativeNumber.h"

#include <cmath>
#include <string_view>
#include <utility>

namespace lumo::macos {

namespace {

// Both are exact as reals.
constexpr double lowestInteger = -0x1p63;
constexpr double beyondHighestInteger = 0x1p63;

std::optional<std::int64_t> wholeNumber(const Value &value) {
    if (const auto boolean = value.boolean()) {
        return *boolean ? 1 : 0;
    }
    if (const auto integer = value.integer()) {
        return integer;
    }
    const auto real = value.real();
    if (!real || !(*real >= lowestInteger && *real < beyondHighestInteger) ||
        std::trunc(*real) != *real) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(*real);
}

std::optional<double> realNumber(const Value &value) {
    if (const auto boolean = value.boolean()) {
        return *boolean ? 1 : 0;
    }
    return value.number();
}

std::optional<bool> truth(const Value &value) {
    const auto whole = wholeNumber(value);
    return whole && (*whole == 0 || *whole == 1) ? std::optional(*whole == 1) : std::nullopt;
}

template <class T>
std::optional<Value> asValue(std::optional<T> number) {
    return number ? std::optional(Value(*number)) : std::nullopt;
}

} // namespace

NativeNumber::Kind kindOfNumber(const char *typeEncoding, bool isBooleanObject) {
    if (isBooleanObject) {
        return NativeNumber::Kind::boolean;
    }
    const std::string_view encoding = typeEncoding;
    if (encoding == "f" || encoding == "d") {
        return NativeNumber::Kind::floatingPoint;
    }
    const bool isUnsigned =
        encoding.size() == 1 && std::string_view("CSILQ").find(encoding) != std::string_view::npos;
    return isUnsigned ? NativeNumber::Kind::unsignedInteger : NativeNumber::Kind::signedInteger;
}

Value valueOf(const NativeNumber &number) {
    switch (number.kind) {
    case NativeNumber::Kind::boolean:
        return number.signedInteger != 0;
    case NativeNumber::Kind::signedInteger:
        return number.signedInteger;
    case NativeNumber::Kind::unsignedInteger:
        if (std::in_range<std::int64_t>(number.unsignedInteger)) {
            return static_cast<std::int64_t>(number.unsignedInteger);
        }
        return static_cast<double>(number.unsignedInteger);
    case NativeNumber::Kind::floatingPoint:
        break;
    }
    return number.floatingPoint;
}

std::optional<Value> cast(const Value &value, ValueType type) {
    switch (type) {
    case ValueType::boolean:
        return asValue(truth(value));
    case ValueType::integer:
        return asValue(wholeNumber(value));
    case ValueType::real:
        return asValue(realNumber(value));
    case ValueType::string:
        break;
    }
    return value.string() != nullptr ? std::optional(value) : std::nullopt;
}

} // namespace lumo::macos
