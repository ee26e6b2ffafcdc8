#pragma once

#include "platform/WindowServer.h"
#include "platform/macos/logic/NativeNumber.h"
#include "support/Value.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

namespace lumo::macos {

// One entry of the window server's dictionaries that is taken over into a record.
struct RecordField {
    std::string_view key;
    ValueType type;
};

inline constexpr std::array windowFields{
    RecordField{windowKey::number, ValueType::integer},
    RecordField{windowKey::ownerPID, ValueType::integer},
    RecordField{windowKey::ownerName, ValueType::string},
    RecordField{windowKey::layer, ValueType::integer},
    RecordField{windowKey::isOnscreen, ValueType::boolean},
    RecordField{windowKey::name, ValueType::string},
    RecordField{windowKey::alpha, ValueType::real},
};

inline constexpr std::array boundsFields{
    RecordField{boundsKey::x, ValueType::real},
    RecordField{boundsKey::y, ValueType::real},
    RecordField{boundsKey::width, ValueType::real},
    RecordField{boundsKey::height, ValueType::real},
};

// What the dictionary holds under a key; absent when there is nothing that a Value could hold.
using FieldReader = std::function<std::optional<Value>(std::size_t field)>;

// The record of a window. Readers are asked by index into the tables above. Values are cast to the
// field's type; one that can't be is kept as it is, so that whoever reads the record finds it
// ill-typed instead of missing. Without bounds the record has none.
Dictionary windowRecord(const FieldReader &fields, const FieldReader *bounds);

} // namespace lumo::macos
