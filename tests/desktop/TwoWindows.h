#pragma once

#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

namespace lumo::desktop {

// A small desktop with a red window and, partly over it, a blue one that is active.
struct TwoWindows {
    explicit TwoWindows(DesktopOptions options = {})
        : desktop([&] {
            options.width = 900;
            options.height = 700;
            return options;
        }()) {
        session.activate(front.window());
        session.eventually([&] { return session.activeWindow() == front.window(); });
    }

    PrivateDesktop desktop;
    DesktopSession &session = desktop.session();
    SampleApplication back{desktop, "Back", {{.area = {60, 80, 420, 320}, .colour = "#d83c30"}}};
    SampleApplication front{
        desktop, "Front", {{.area = {360, 240, 420, 320}, .colour = "#3c64e0"}}};
};

} // namespace lumo::desktop
