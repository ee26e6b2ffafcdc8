#pragma once

#include "platform/StatusItem.h"
#include "support/Signal.h"

#import <AppKit/AppKit.h>

@class LumoStatusItemTarget;

namespace lumo::macos {

// The item in the menu bar.
class MacStatusItem final : public StatusItem {
  public:
    MacStatusItem();
    ~MacStatusItem() override;
    MacStatusItem(const MacStatusItem &) = delete;
    MacStatusItem &operator=(const MacStatusItem &) = delete;

    void setToolTip(const std::string &text) override;
    void setTitle(const StatusTitle &title) override;
    bool isShown() const override { return true; } // there is always a menu bar
    Handle onShownChange(std::function<void()> /*observer*/) override { return {}; }
    Handle onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) override;

    // What a popover is shown at.
    NSView *button() const;

  private:
    StatusItemPlace place() const;

    NSStatusItem *item_;
    LumoStatusItemTarget *target_;
    Signal<StatusItemPlace> clicked_;
};

} // namespace lumo::macos
