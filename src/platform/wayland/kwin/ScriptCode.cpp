#include "platform/wayland/kwin/ScriptCode.h"

namespace lumo::wayland::kwin {

const char *const desktopScript = R"js(
var told = "";
function windows() {
    return workspace.windowList ? workspace.windowList() : workspace.clientList();
}
function report() {
    var docks = [];
    windows().forEach(function (w) {
        if (w.dock && !w.minimized && !w.hidden) {
            var frame = w.frameGeometry;
            docks.push({x: Math.floor(frame.x), y: Math.floor(frame.y), width: Math.ceil(frame.width),
                        height: Math.ceil(frame.height), process: w.pid});
        }
    });
    var text = JSON.stringify({docks: docks, activity: String(workspace.currentActivity || "")});
    if (text !== told) {
        told = text;
        tell(text);
    }
}
function follow(w) {
    if (w.dock) {
        ["frameGeometryChanged", "minimizedChanged", "windowHidden", "windowShown", "hiddenChanged"]
            .forEach(function (name) {
                if (w[name] && w[name].connect) {
                    w[name].connect(report);
                }
            });
    }
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

} // namespace lumo::wayland::kwin
