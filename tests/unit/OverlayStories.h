#pragma once

#include "ScriptedDesktop.h"
#include "overlay/OverlayManager.h"
#include "settings/SettingsStore.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo::test {

constexpr double tickInterval = 1.0 / 60;

// A desktop with two displays side by side, the right one taller, and the overlay engine on it.
class OverlayStories : public testing::Test {
  protected:
    using WindowID = ScriptedDesktop::WindowID;

    OverlayStories() {
        desktop.plugDisplay(left, {0, 0, 1440, 900});
        desktop.plugDisplay(right, {1440, 0, 1920, 1080});
    }

    // A window of 800 x 600 points well inside a display.
    WindowID openOn(ScriptedDesktop::DisplayID display, ScriptedDesktop::ProcessID owner,
                    std::optional<std::string> title = "Report") {
        const Rect bounds{display == left ? 100.0 : 1600.0, 300, 800, 600};
        return desktop.openWindow(owner, bounds, std::move(title));
    }

    // The window that is clear on the display: the overlay lies right below it.
    std::optional<WindowID> clearOn(ScriptedDesktop::DisplayID display) {
        return desktop.windowAbove(desktop.overlayOn(display).number);
    }

    const LayerTree &shownOn(ScriptedDesktop::DisplayID display) {
        return desktop.overlayOn(display).tree.value();
    }

    float tintOn(ScriptedDesktop::DisplayID display) {
        return shownOn(display).layers.back().opacity;
    }

    void tick() { desktop.advance(tickInterval); }

    // Long enough for a change of the clear window to be applied.
    void settle() { desktop.advance(0.2); }

    int linesWith(const std::string &text) const {
        return static_cast<int>(std::ranges::count_if(desktop.logLines, [&](const auto &line) {
            return line.find(text) != std::string::npos;
        }));
    }

    static constexpr ScriptedDesktop::DisplayID left = 7;
    static constexpr ScriptedDesktop::DisplayID right = 9;
    ScriptedDesktop desktop;
    SettingsStore settings{desktop.platform()};
    std::unique_ptr<OverlayManager> manager =
        std::make_unique<OverlayManager>(desktop.platform(), settings);
    ScriptedDesktop::ProcessID editor = desktop.launch("Editor", "org.example.Editor");
    ScriptedDesktop::ProcessID browser = desktop.launch("Browser", "org.example.Browser");
};

} // namespace lumo::test
