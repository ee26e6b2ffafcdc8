#pragma once

#include "platform/LayerTree.h"
#include "support/Geometry.h"
#include "support/Handle.h"

#include <functional>
#include <optional>
#include <string>

namespace lumo {

// What the item shows: a short text.
struct StatusTitle {
    std::string text; // UTF-8
    Color color;
    double pointSize = 0;
    bool isSemibold = false;
    double baselineOffset = 0; // points, positive up

    bool operator==(const StatusTitle &) const = default;
};

// Where on the desktop the user has acted on the item, in points in the space of Screen::frame.
struct StatusItemPlace {
    std::optional<Rect> item; // absent where the desktop does not tell it
    Point pointer;
};

// The program's item in the desktop's status area. Appears when there is such an area, now or
// later, and again when the area has been restarted. Main thread only; never waits.
class StatusItem {
  public:
    virtual ~StatusItem() = default;

    virtual void setToolTip(const std::string &text) = 0;
    virtual void setTitle(const StatusTitle &title) = 0;

    // Whether the desktop has an area that shows the item, as far as is known by now.
    virtual bool isShown() const = 0;

    // Calls the observer after isShown() may have changed.
    virtual Handle onShownChange(std::function<void()> observer) = 0;

    // Calls the observer when the right mouse button was released over the item. Nothing else acts
    // on it.
    virtual Handle onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) = 0;
};

} // namespace lumo
