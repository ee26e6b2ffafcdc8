#pragma once

#include "support/Value.h"

#include <memory>
#include <string_view>
#include <vector>

namespace lumo {

// The keys of a window record.
namespace windowKey {
inline constexpr std::string_view number = "kCGWindowNumber";       // integer, unsigned 32-bit
inline constexpr std::string_view ownerPID = "kCGWindowOwnerPID";   // integer, signed 32-bit
inline constexpr std::string_view ownerName = "kCGWindowOwnerName"; // string
inline constexpr std::string_view layer = "kCGWindowLayer";   // integer; 0 is an ordinary window
inline constexpr std::string_view bounds = "kCGWindowBounds"; // dictionary of the four keys below
inline constexpr std::string_view isOnscreen = "kCGWindowIsOnscreen"; // boolean
inline constexpr std::string_view name = "kCGWindowName";   // string; absent when untitled
inline constexpr std::string_view alpha = "kCGWindowAlpha"; // real, 0 to 1
} // namespace windowKey

// The keys of a window's bounds: numbers, in points.
namespace boundsKey {
inline constexpr std::string_view x = "X";
inline constexpr std::string_view y = "Y";
inline constexpr std::string_view width = "Width";
inline constexpr std::string_view height = "Height";
} // namespace boundsKey

using WindowRecords = std::vector<Dictionary>;

// What the window server knows about everybody's windows.
class WindowServer {
  public:
    virtual ~WindowServer() = default;

    // The windows that are on screen, frontmost first, desktop elements left out. Bounds are in
    // points with the origin at the top left of the desktop and y pointing down. Null when the list
    // can't be read. The records never change once handed out; the same object is handed out again
    // for as long as nothing has changed. Cheap enough for every tick.
    virtual std::shared_ptr<const WindowRecords> onScreenWindows() const = 0;
};

} // namespace lumo
