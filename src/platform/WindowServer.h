#pragma once

#include "support/Geometry.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo {

// One on-screen window of some application, as far as the window server tells about it. Each of the
// optional facts can be missing by itself: it is then withheld, or can't be read.
struct WindowRecord {
    std::optional<std::uint32_t> number = {};
    std::optional<std::int32_t> ownerProcess = {};
    std::optional<std::string> ownerName = {};
    // The band in which the window is ordered; 0 is that of ordinary windows.
    std::optional<std::int64_t> layer = {};
    // In points, origin at the top left of the desktop, y down. Width and height are not negative.
    std::optional<Rect> bounds = {};
    std::optional<bool> isOnScreen = {};
    std::optional<std::string> title = {}; // absent when the window has none
    // 0 for a window that can't be seen, 1 for an opaque one, and where the server does not say.
    double alpha = 1;

    bool operator==(const WindowRecord &) const = default;
};

using WindowRecords = std::vector<WindowRecord>;

// What the window server knows about the windows of all applications. Main thread only.
class WindowServer {
  public:
    virtual ~WindowServer() = default;

    // The windows that are on screen, frontmost first, desktop elements left out. Null when the
    // list can't be read. The records never change once returned; the same object is returned again
    // for as long as nothing has changed. Cheap enough for every tick.
    virtual std::shared_ptr<const WindowRecords> onScreenWindows() const = 0;
};

} // namespace lumo
