#pragma once

#include "platform/LayerTree.h"
#include "support/Geometry.h"
#include "support/Value.h"

#import <AppKit/AppKit.h>

#include <optional>
#include <string>
#include <string_view>

namespace lumo::macos {

// UTF-8 both ways. Bytes that are not UTF-8 give an empty string.
NSString *nativeString(std::string_view text);
std::string text(NSString *string);

// Absent for nil.
std::optional<std::string> optionalText(NSString *string);

// A number, string or block of bytes with the type under which it is kept; absent for any other
// object and for nil.
std::optional<Value> valueOf(id object);

// The object that a value stands for.
id nativeObject(const Value &value);

Rect rectOf(CGRect rect);
CGRect nativeRect(const Rect &rect);

// Black, white and clear are the platform's own, everything else is calibrated RGB.
NSColor *nativeColor(const Color &color);

} // namespace lumo::macos
