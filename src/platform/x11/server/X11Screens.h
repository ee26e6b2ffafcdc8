#pragma once

#include "drawing/PixelRect.h"
#include "drawing/PointSpace.h"
#include "platform/Screens.h"
#include "platform/x11/server/Monitor.h"
#include "platform/x11/server/PendingReads.h"
#include "support/Signal.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace lumo {
class MainLoop;
}

namespace lumo::x11 {

class Connection;

// The monitors of the root window, as screens that have no pixel in common: see apart(). A display
// that is plugged in or changes its mode shows itself by a burst of events with states in between;
// the screens change once, when the burst is over. Construction waits for the server; nothing after
// it does.
//
// The scale is that of the resource Xft.dpi in quarter steps, at least 1, times QT_SCALE_FACTOR
// from the environment.
class X11Screens final : public Screens {
  public:
    // Both outlive the screens.
    X11Screens(Connection &connection, MainLoop &mainLoop);
    ~X11Screens() override;

    const std::vector<Screen> &screens() const override { return screens_; }
    Handle onScreenParametersDidChange(std::function<void()> observer) override;

    // The rectangles of screens(), in the same order.
    const std::vector<drawing::PixelRect> &pixelRects() const { return pixelRects_; }

    const drawing::PointSpace &pointSpace() const { return pointSpace_; }

    // A number that is another one after each change.
    std::uint64_t revision() const { return revision_; }

    // True when nothing that is known to have changed is still to be read.
    bool isSettled() const { return reads_.isIdle() && replies_.isEmpty(); }

  private:
    void readWhenQuiet(std::uint32_t parts);
    void requestReads();
    void readMonitors();
    void applyMonitors(const xcb_randr_get_monitors_reply_t *reply);
    void readMonitor(const std::shared_ptr<std::vector<Monitor>> &found, std::size_t index,
                     const xcb_randr_monitor_info_t &info);
    void finishMonitors(std::vector<Monitor> found);
    void update();

    Connection &connection_;
    MainLoop &mainLoop_;
    xcb_atom_t edid_;
    double userScale_;
    PendingReads reads_;
    ReplyQueue replies_;
    Handle quiet_; // while a burst of events lasts
    double burstBeganAt_ = 0;
    drawing::PixelRect root_;
    double resourceScale_ = 1;
    std::vector<Monitor> monitors_;

    std::vector<Screen> screens_;
    std::vector<drawing::PixelRect> pixelRects_;
    drawing::PointSpace pointSpace_;
    std::uint64_t revision_ = 1;
    Signal<> changes_;
    std::array<Handle, 4> events_;
    Handle batches_;
};

} // namespace lumo::x11
