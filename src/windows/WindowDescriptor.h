#pragma once

#include "support/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>

namespace lumo {

struct WindowRecord;

// One on-screen window of some application, as the window server listed it. A plain value.
struct WindowDescriptor {
    // Identity for lists; always equal to windowID.
    std::uint32_t id = 0;
    std::uint32_t windowID = 0;
    std::int32_t ownerPID = 0;
    std::string ownerName;
    // Absent when the owner has none or is no application.
    std::optional<std::string> bundleID;
    // The position in the window server's list: 0 is frontmost.
    std::int64_t zOrder = 0;
    // The band in which the window is ordered; 0 is that of ordinary windows.
    std::int64_t layer = 0;
    // In points, origin at the top left of the desktop, y down. Width and height are not negative.
    Rect bounds;
    // Width times height of the bounds.
    double area = 0;
    bool isOnScreen = false;
    // Absent when the window has no title or it is withheld.
    std::optional<std::string> name;

    // The window of a record. Absent when the number, the owner's process or name, the layer, the
    // bounds or the on-screen flag is missing.
    static std::optional<WindowDescriptor> from(const WindowRecord &record, std::int64_t zOrder,
                                                std::optional<std::string> bundleID);

    bool operator==(const WindowDescriptor &) const = default;
};

} // namespace lumo
