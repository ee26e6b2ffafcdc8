// What the real program costs on a real X server, measured from outside. Prints numbers and judges
// none; wall times move with what else the machine does.

#include "ProcessUse.h"
#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <poll.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

double quantile(std::vector<double> values, double share) {
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(
        std::lround(share * static_cast<double>(values.size() - 1)))];
}

void require(bool holds, const char *what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

// Five applications with ten windows each, in a cascade.
class CrowdedDesktop {
  public:
    explicit CrowdedDesktop(Compositor compositor)
        : desktop({.width = 1920, .height = 1080, .compositor = compositor}) {
        for (int application = 0; application < 5; ++application) {
            std::vector<SampleWindow> windows;
            windows.reserve(10);
            for (int window = 0; window < 10; ++window) {
                windows.push_back(
                    {.title = "Window " + std::to_string(window),
                     .area = {60 + 260 * application + 12 * window, 60 + 30 * window, 640, 480},
                     .colour = "#6080a0"});
            }
            applications.push_back(std::make_unique<SampleApplication>(
                desktop, "Application" + std::to_string(application), windows));
        }
    }

    PrivateDesktop desktop;
    DesktopSession &session = desktop.session();
    std::vector<std::unique_ptr<SampleApplication>> applications;
};

void measureStart(Compositor compositor) {
    PrivateDesktop desktop({.width = 1920, .height = 1080, .compositor = compositor});
    DesktopSession &session = desktop.session();
    const SampleApplication application(desktop, "Sample", {{}});
    std::vector<double> milliseconds;
    for (int run = 0; run < 11; ++run) {
        const auto before = session.stacking();
        const double start = now();
        LumoProcess lumo(desktop, shownEffect("dim", 0.6));
        require(session.eventually([&] {
            return std::ranges::any_of(session.stacking(), [&](xcb_window_t window) {
                return std::ranges::find(before, window) == before.end() &&
                       session.isViewable(window);
            });
        }),
                "no overlay came");
        milliseconds.push_back((now() - start) * 1000);
        require(lumo.stop() == 0, "the program did not stop well");
    }
    std::printf("  start to first overlay mapped: median %.0f ms, slowest of 11 %.0f ms\n",
                quantile(milliseconds, 0.5), quantile(milliseconds, 1));
}

// When an overlay was restacked last, and the active window was set last, in seconds on the steady
// clock; 0 for never.
class FocusWatch {
  public:
    FocusWatch(DesktopSession &session, const std::string &displayName, xcb_window_t overlay)
        : connection_(xcb_connect(displayName.c_str(), nullptr))
        , overlay_(overlay)
        , activeWindow_(session.atom("_NET_ACTIVE_WINDOW")) {
        const std::uint32_t events =
            XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection_, session.root(), XCB_CW_EVENT_MASK, &events);
        xcb_flush(connection_);
    }

    // Waits for events, so that their times are exact, until one came after the other.
    bool awaitRestackAfterActivation(double asked) {
        const double end = now() + 10;
        while (activatedAt <= asked || restackedAt <= activatedAt) {
            pollfd ready{xcb_get_file_descriptor(connection_), POLLIN, 0};
            if (now() >= end || poll(&ready, 1, 1000) < 0) {
                return false;
            }
            look();
        }
        return true;
    }

    ~FocusWatch() { xcb_disconnect(connection_); }
    FocusWatch(const FocusWatch &) = delete;
    FocusWatch &operator=(const FocusWatch &) = delete;

    void look() {
        while (auto *event = xcb_poll_for_event(connection_)) {
            const int type = event->response_type & 0x7f;
            if (type == XCB_CONFIGURE_NOTIFY) {
                xcb_configure_notify_event_t configured;
                std::memcpy(&configured, event, sizeof configured);
                restackedAt = configured.window == overlay_ ? now() : restackedAt;
            } else if (type == XCB_PROPERTY_NOTIFY) {
                xcb_property_notify_event_t changed;
                std::memcpy(&changed, event, sizeof changed);
                activatedAt = changed.atom == activeWindow_ ? now() : activatedAt;
            }
            std::free(event);
        }
    }

    double restackedAt = 0;
    double activatedAt = 0;

  private:
    xcb_connection_t *connection_;
    xcb_window_t overlay_;
    xcb_atom_t activeWindow_;
};

void measureFocus(CrowdedDesktop &crowd, xcb_window_t overlay) {
    constexpr double debounce = 0.08;
    DesktopSession &session = crowd.session;
    FocusWatch watch(session, crowd.desktop.displayName(), overlay);
    std::vector<double> milliseconds;
    const auto isInPlace = [&](xcb_window_t window) {
        return session.eventually([&] { return session.isAbove(window, overlay); });
    };
    // It may be active already.
    session.activate(crowd.applications[0]->window(0));
    require(isInPlace(crowd.applications[0]->window(0)), "the overlay is in the wrong place");
    for (std::size_t change = 1; change < 51; ++change) {
        const xcb_window_t window = crowd.applications[change % 5]->window(change % 10);
        watch.look();
        const double asked = now();
        session.activate(window);
        require(watch.awaitRestackAfterActivation(asked), "the overlay does not follow the focus");
        milliseconds.push_back((watch.restackedAt - watch.activatedAt - debounce) * 1000);
        require(isInPlace(window), "the overlay is in the wrong place");
    }
    std::printf("  focus change to restack, beyond the 80 ms of debounce: median %.1f ms, "
                "p95 %.1f ms of 50\n",
                quantile(milliseconds, 0.5), quantile(milliseconds, 0.95));
}

void measureIdle(CrowdedDesktop &crowd, LumoProcess &lumo) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
    const char *wanted = std::getenv("LUMO_BENCHMARK_IDLE_SECONDS");
    const double seconds = wanted != nullptr ? std::strtod(wanted, nullptr) : 20;
    const double start = now();
    const double ownBefore = cpuSeconds(lumo.process().processIdentifier());
    const double serverBefore = cpuSeconds(crowd.desktop.server().processIdentifier());
    const long turnsBefore = lumo.process().voluntarySwitches();
    // A wait that asks the server nothing: looks would count as the server's time.
    while (now() - start < seconds) {
        pauseBriefly();
    }
    const double elapsed = now() - start;
    const double own = cpuSeconds(lumo.process().processIdentifier()) - ownBefore;
    const double server = cpuSeconds(crowd.desktop.server().processIdentifier()) - serverBefore;
    const auto turns = static_cast<double>(lumo.process().voluntarySwitches() - turnsBefore);
    std::printf(
        "  idle with 50 windows, %.0f s scaled to a minute: %.3f s CPU (%.2f %% of a core), "
        "X server %.3f s, main loop sleeps %.0f/s\n",
        elapsed, own * 60 / elapsed, own * 100 / elapsed, server * 60 / elapsed, turns / elapsed);
}

void measureCrowd(Compositor compositor, const std::string &mode) {
    std::printf("  %s\n", mode.c_str());
    CrowdedDesktop crowd(compositor);
    LumoProcess lumo(crowd.desktop, shownEffect(mode, 0.6));
    const xcb_window_t overlay = lumo.waitForOverlays().front().window;
    measureFocus(crowd, overlay);
    crowd.session.stillPicture();
    measureIdle(crowd, lumo);
    const MemoryUse memory = memoryUse(lumo.process().processIdentifier());
    std::printf("  memory: %.1f MB resident, %.1f MB proportional, libGL %s\n",
                memory.residentMegabytes, memory.proportionalMegabytes,
                hasMapped(lumo.process().processIdentifier(), "libGL") ? "mapped" : "not mapped");
}

} // namespace
} // namespace lumo::desktop

int main() {
    using lumo::desktop::Compositor;
    try {
        for (const auto &[compositor, name] :
             {std::pair{Compositor::none, "openbox, 1920x1080, no compositing manager"},
              std::pair{Compositor::picomXrender, "openbox, 1920x1080, picom with xrender"}}) {
            std::printf("%s\n", name);
            lumo::desktop::measureStart(compositor);
            lumo::desktop::measureCrowd(compositor, "dim");
            lumo::desktop::measureCrowd(compositor, "softBlur");
        }
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The benchmark failed: %s\n", problem.what());
        return 1;
    }
}
