#pragma once

#include "platform/WindowServer.h"
#include "support/Value.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

namespace lumo::macos {

// The entries of the window server's dictionaries that are read.
enum class WindowField { number, ownerPID, ownerName, layer, isOnscreen, name, alpha };

// Their keys, by WindowField. The bounds are a dictionary of their own.
inline constexpr std::array<std::string_view, 7> windowKeys{
    "kCGWindowNumber",     "kCGWindowOwnerPID", "kCGWindowOwnerName", "kCGWindowLayer",
    "kCGWindowIsOnscreen", "kCGWindowName",     "kCGWindowAlpha"};

enum class BoundsField { x, y, width, height };

inline constexpr std::array<std::string_view, 4> boundsKeys{"X", "Y", "Width", "Height"};

// The value that a dictionary has under a key, by the key's index in the tables above; absent when
// there is none, or none that a Value could hold.
using FieldReader = std::function<std::optional<Value>(std::size_t field)>;

// The record of a window. A null reader for the bounds stands for an entry that is missing or is no
// dictionary.
//
// Numbers are taken as any type that represents the same. A fact is absent when its entry is
// missing, or of another type, or out of the fact's range. Of the bounds, a side that is missing
// counts as 0, a negative one reaches the other way from the origin, and one of another type leaves
// the window without bounds. A window whose alpha or layer is of another type counts as invisible;
// without an alpha it is opaque.
WindowRecord windowRecord(const FieldReader &fields, const FieldReader *bounds);

} // namespace lumo::macos
