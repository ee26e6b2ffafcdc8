#pragma once

#include "support/Value.h"

#include <cstdint>
#include <optional>

namespace lumo::macos {

// A number object as it describes itself.
struct NativeNumber {
    enum class Kind { boolean, signedInteger, unsignedInteger, floatingPoint };

    Kind kind = Kind::signedInteger;
    std::int64_t signedInteger = 0;
    std::uint64_t unsignedInteger = 0;
    double floatingPoint = 0;
};

// The kind of a number by the type encoding of the compiler ("q", "d", ...). The boolean objects
// are told by identity, since their encoding is that of a character.
NativeNumber::Kind kindOfNumber(const char *typeEncoding, bool isBooleanObject);

// The number with the type under which it is kept; one too large for a signed 64-bit integer as a
// real.
Value valueOf(const NativeNumber &number);

// How a value is wanted.
enum class ValueType { boolean, integer, real, string };

// The value as the wanted type where it represents the same: whole reals as integers, integers as
// reals, 0 and 1 as booleans and the other way round. Absent otherwise.
std::optional<Value> cast(const Value &value, ValueType type);

} // namespace lumo::macos
