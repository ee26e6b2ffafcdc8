#pragma once

#include "platform/ViewHost.h"
#include "presentation/UserInterface.h"

#include <functional>
#include <memory>
#include <string>

class QWidget;

namespace lumo {

// Takes a view that is not needed any more, and that may be what calls.
using DiscardView = std::function<void(std::unique_ptr<QWidget>)>;

// The popover and the windows of the program where the desktop draws what is around a view: each
// makes its view, hands it to the host and discards it at the end. All references outlive them.

std::unique_ptr<Popover> makeHostedPopover(ViewHost &host,
                                           std::function<std::unique_ptr<QWidget>()> makeView,
                                           DiscardView discard);

std::unique_ptr<InterfaceWindow> makeHostedWindow(ViewHost &host, HostedWindowKind kind,
                                                  const std::string &title,
                                                  std::unique_ptr<QWidget> view,
                                                  std::function<void()> onWillClose,
                                                  DiscardView discard);

} // namespace lumo
