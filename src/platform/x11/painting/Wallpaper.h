#pragma once

#include "drawing/PixelRect.h"
#include "platform/LayerTree.h"
#include "platform/x11/server/ServerResource.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace lumo::x11 {

class CompositorWatch;
class Connection;
class RenderFormats;
class WindowMirror;

// What lies beneath all windows: the pixmap that the root window's property names; else, while a
// compositing manager draws the desktop, the colour in the settings of the desktop that runs, or
// the one that is seen where no window is; else the root window's own background. (A desktop that
// shows its picture in a window needs none of this.)
// Follows the property while running. Main thread only; only construction waits for the server.
class Wallpaper {
  public:
    Wallpaper(Connection &connection, WindowMirror &mirror, const RenderFormats &formats,
              CompositorWatch &compositor);

    // Draws the part within the area, opaque, to a picture whose origin is the area's top left.
    void drawOnto(xcb_render_picture_t picture, const drawing::PixelRect &area);

    // Calls the observer after it has become another one.
    Handle onChange(std::function<void()> observer) {
        return changed_.subscribe(std::move(observer));
    }

  private:
    enum class Source { unread, property, rootBackground };

    void readProperty(std::size_t index);
    void readPixmap(std::size_t index, xcb_pixmap_t pixmap);
    void settle(OwnedPicture picture);
    void rootIs(std::uint16_t width, std::uint16_t height);
    void recapture();
    void capture();
    void captureSettingsColor(const Color &color);
    void captureRootBackground();
    void captureSeen(std::int16_t x, std::int16_t y);
    std::optional<std::pair<std::int16_t, std::int16_t>> uncoveredPlace() const;

    Connection &connection_;
    const WindowMirror &mirror_;
    const RenderFormats &formats_;
    CompositorWatch &compositor_;
    OwnedPicture picture_;           // repeats, from the root window's origin; none while not known
    Source source_ = Source::unread; // as last read
    std::uint16_t rootWidth_;
    std::uint16_t rootHeight_;
    unsigned reading_ = 0; // which reading of the property the replies must belong to
    Signal<> changed_;
    Handle events_;
    Handle compositorChanges_;
    Handle mirrorChanges_;
    Lifetime lifetime_;
};

} // namespace lumo::x11
