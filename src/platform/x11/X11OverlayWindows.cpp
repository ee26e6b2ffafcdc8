#include "platform/x11/X11OverlayWindows.h"

#include "platform/Screens.h"
#include "platform/x11/server/Connection.h"

#include <utility>

namespace lumo::x11 {

X11OverlayWindows::X11OverlayWindows(Connection &connection, WindowMirror &mirror, Screens &screens,
                                     std::function<drawing::PointSpace()> pointSpace,
                                     MainLoop &mainLoop, const Log &log)
    : log_(log)
    , formats_(connection)
    , images_(connection)
    , compositor_(connection, mainLoop)
    , redirection_(connection)
    , surfaces_(connection, mirror, formats_)
    , wallpaper_(connection, mirror, formats_, compositor_)
    , backdropRenderers_({connection, formats_, images_}, mainLoop, log_)
    , placementChoice_(mirror, mainLoop, log_)
    , surroundings_{connection,
                    mirror,
                    screens,
                    std::move(pointSpace),
                    mainLoop,
                    log_,
                    {connection, formats_, images_},
                    compositor_,
                    redirection_,
                    surfaces_,
                    wallpaper_,
                    backdropRenderers_,
                    placementChoice_}
    , compositorChanges_(compositor_.onChange([this] { backdropRenderers_.reconsider(); }))
    , screenChanges_(
          screens.onScreenParametersDidChange([this] { backdropRenderers_.reconsider(); })) {
    // What libxcb or the connection would else wait for when an overlay first needs it.
    xcb_get_maximum_request_length(connection);
    connection.internAtoms({"UTF8_STRING",
                            "_NET_WM_NAME",
                            "_NET_WM_PID",
                            "_NET_WM_WINDOW_TYPE",
                            "_NET_WM_WINDOW_TYPE_DND",
                            "_NET_WM_WINDOW_TYPE_NORMAL",
                            "_NET_WM_WINDOW_OPACITY",
                            "_NET_WM_STATE",
                            "_KDE_NET_WM_STATE_SKIP_SWITCHER",
                            "_MOTIF_WM_HINTS",
                            "_NET_WM_USER_TIME",
                            "WM_NORMAL_HINTS",
                            "_NET_RESTACK_WINDOW",
                            "_NET_WM_STATE_SKIP_TASKBAR",
                            "_NET_WM_STATE_SKIP_PAGER",
                            "_NET_WM_STATE_STICKY",
                            "_NET_WM_DESKTOP",
                            "_NET_WM_BYPASS_COMPOSITOR",
                            "_COMPTON_SHADOW",
                            "WM_HINTS"});
}

std::unique_ptr<PlatformWindow> X11OverlayWindows::makeWindow(const Rect &frame) {
    return std::make_unique<X11PlatformWindow>(surroundings_, frame);
}

} // namespace lumo::x11
