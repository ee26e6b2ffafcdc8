#include "platform/x11/windows/X11Accessibility.h"

#include "platform/x11/windows/WindowMirror.h"

#include <utility>

namespace lumo::x11 {

class X11Accessibility::Window final : public AccessibilityWindow {
  public:
    Window(xcb_window_t client, X11Accessibility &owner)
        : client_(client)
        , owner_(owner) {}

    bool raise() override {
        const auto *window = owner_.mirror_.find(client_);
        if (window == nullptr || !window->isMapped || !owner_.pager_.isAvailable()) {
            return false;
        }
        owner_.pager_.raise(*window);
        return true;
    }

  private:
    xcb_window_t client_;
    X11Accessibility &owner_;
};

X11Accessibility::X11Accessibility(Connection &connection, WindowMirror &mirror)
    : mirror_(mirror)
    , pager_(connection, mirror)
    , announcedTrust_(pager_.isAvailable())
    , changes_(mirror.onChange([this](const auto &change) { handle(change); })) {
}

void X11Accessibility::handle(const MirrorChange &change) {
    if (change.windowManager &&
        std::exchange(announcedTrust_, pager_.isAvailable()) != announcedTrust_) {
        trustChanged_.emit();
    }
    if (change.activeWindow) {
        focusedWindowChanged_.emit();
    }
}

Handle X11Accessibility::onProcessTrustDidChange(std::function<void()> observer) {
    return trustChanged_.subscribe(std::move(observer));
}

Handle X11Accessibility::onFocusedWindowDidChange(std::function<void()> observer) {
    return focusedWindowChanged_.subscribe(std::move(observer));
}

bool X11Accessibility::isProcessTrusted() const {
    return pager_.isAvailable();
}

std::vector<std::unique_ptr<AccessibilityWindow>>
X11Accessibility::windows(std::int32_t processIdentifier) {
    std::vector<std::unique_ptr<AccessibilityWindow>> windows;
    const auto &stacking = mirror_.stacking();
    for (std::size_t i = stacking.size(); i-- > 0;) {
        const auto &window = *mirror_.find(stacking[i]);
        if (window.isManaged && window.processIdentifier == processIdentifier) {
            windows.push_back(std::make_unique<Window>(window.client, *this));
        }
    }
    return windows;
}

} // namespace lumo::x11
