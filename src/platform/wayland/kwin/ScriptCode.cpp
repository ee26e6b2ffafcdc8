#include "platform/wayland/kwin/ScriptCode.h"

namespace lumo::wayland::kwin {

const char *const desktopScript = R"js(
var told = "";
function windows() {
    return workspace.windowList ? workspace.windowList() : workspace.clientList();
}
function isAbsent(w) {
    var all = w.activities || [];
    return Boolean(workspace.currentActivity) && all.length > 0 &&
        all.indexOf(String(workspace.currentActivity)) < 0;
}
function report() {
    var docks = [], absentees = [], activity = String(workspace.currentActivity || "");
    windows().forEach(function (w) {
        if (isAbsent(w)) {
            absentees.push({process: w.pid, title: w.caption});
        }
        if (w.dock && !w.minimized && !w.hidden) {
            var frame = w.frameGeometry;
            docks.push({x: Math.floor(frame.x), y: Math.floor(frame.y), width: Math.ceil(frame.width),
                        height: Math.ceil(frame.height), process: w.pid});
        }
    });
    var text = JSON.stringify({docks: docks, activity: activity, absentees: absentees});
    if (text !== told) {
        told = text;
        tell(text);
    }
}
function follow(w) {
    var names = ["activitiesChanged"];
    if (w.dock) {
        names.push("frameGeometryChanged", "minimizedChanged", "windowHidden", "windowShown",
                   "hiddenChanged");
    }
    w.captionChanged.connect(function () {
        if (isAbsent(w)) {
            report();
        }
    });
    names.forEach(function (name) {
        if (w[name] && w[name].connect) {
            w[name].connect(report);
        }
    });
}
function added(w) {
    follow(w);
    report();
}
windows().forEach(follow);
(workspace.windowAdded || workspace.clientAdded).connect(added);
(workspace.windowRemoved || workspace.clientRemoved).connect(report);
workspace.currentActivityChanged.connect(report);
report();
)js";

const char *const pointerScript = R"js(
var stroke = 90, longestPause = 340, pause = 34;
var x = workspace.cursorPos.x, travelled = 0, toldAt = 0, isPending = false;
workspace.cursorPosChanged.connect(function () {
    var now = Date.now(), moved = workspace.cursorPos.x - x;
    x += moved;
    if (isPending && now - toldAt > longestPause) {
        isPending = false;
        travelled = 0;
    }
    travelled += moved;
    if (Math.abs(travelled) >= stroke && now - toldAt >= pause) {
        toldAt = now;
        isPending = true;
        tell(String(travelled));
        travelled = 0;
    }
});
)js";

std::string placementScript(std::int32_t process, const std::string &title,
                            const drawing::PixelRect &area, const drawing::PixelRect &point) {
    return "var process = " + std::to_string(process) + ", title = \"" + title +
           "\", width = " + std::to_string(area.width) +
           ", height = " + std::to_string(area.height) + ", told = {x: " + std::to_string(point.x) +
           ", y: " + std::to_string(point.y) +
           R"js(}, gap = 6;
var desktop = workspace.currentDesktop, screens = workspace.screens;
if (!screens) {
    screens = [];
    for (var i = 0; i < workspace.numScreens; ++i) {
        screens.push(i);
    }
}
function has(area, point) {
    return point.x >= area.x && point.x < area.x + area.width && point.y >= area.y &&
        point.y < area.y + area.height;
}
function screenWith(point) {
    return screens.filter(function (screen) {
        return has(workspace.clientArea(KWin.ScreenArea, screen, desktop), point);
    })[0];
}
function usableAround(point) {
    return workspace.clientArea(KWin.MaximizeArea, screenWith(point), desktop);
}
function isInPanel(point) {
    return screenWith(point) !== undefined && !has(usableAround(point), point);
}
function within(least, wanted, most) {
    return Math.max(least, Math.min(wanted, most));
}
function place(w) {
    if (w.pid !== process || w.caption !== title) {
        return;
    }
    var at = isInPanel(told) ? told : workspace.cursorPos, free = usableAround(at);
    var isLow = at.y > free.y + free.height / 2;
    w.skipTaskbar = w.skipPager = w.skipSwitcher = w.keepAbove = true;
    w.frameGeometry = {
        x: within(free.x + gap, Math.round(at.x - width / 2), free.x + free.width - width - gap),
        y: isLow ? free.y + free.height - height - gap : free.y + gap,
        width: width, height: height
    };
    workspace[workspace.windowList ? "activeWindow" : "activeClient"] = w;
}
(workspace.windowList ? workspace.windowList() : workspace.clientList()).forEach(place);
(workspace.windowAdded || workspace.clientAdded).connect(place);
)js";
}

} // namespace lumo::wayland::kwin
