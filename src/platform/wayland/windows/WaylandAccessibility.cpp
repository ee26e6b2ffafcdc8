#include "platform/wayland/windows/WaylandAccessibility.h"

#include "platform/wayland/windows/WindowSource.h"

#include <utility>

namespace lumo::wayland {

class WaylandAccessibility::Window final : public AccessibilityWindow {
  public:
    Window(WindowSource &source, std::uint32_t identifier)
        : source_(source)
        , identifier_(identifier) {}

    bool raise() override {
        const auto *window = source_.state().find(identifier_);
        if (window == nullptr || window->presence != DesktopWindow::Presence::shown) {
            return false;
        }
        source_.raise(identifier_);
        return true;
    }

  private:
    WindowSource &source_;
    std::uint32_t identifier_;
};

WaylandAccessibility::WaylandAccessibility(WindowSource &source)
    : source_(source)
    , changes_(source.onChange([this] {
        const auto *focused = source_.state().focused();
        const auto now = focused != nullptr ? std::optional(focused->identifier) : std::nullopt;
        if (std::exchange(announcedFocus_, now) != now) {
            focusedWindowChanged_.emit();
        }
    })) {
}

Handle WaylandAccessibility::onFocusedWindowDidChange(std::function<void()> observer) {
    return focusedWindowChanged_.subscribe(std::move(observer));
}

std::vector<std::unique_ptr<AccessibilityWindow>>
WaylandAccessibility::windows(std::int32_t processIdentifier) {
    std::vector<std::unique_ptr<AccessibilityWindow>> windows;
    const auto &all = source_.state().windows;
    for (std::size_t i = all.size(); i-- > 0;) {
        if (all[i].process == processIdentifier) {
            windows.push_back(std::make_unique<Window>(source_, all[i].identifier));
        }
    }
    return windows;
}

} // namespace lumo::wayland
