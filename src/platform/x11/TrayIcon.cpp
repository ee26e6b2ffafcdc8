#include "platform/x11/TrayIcon.h"

#include "platform/freedesktop/DotPicture.h"
#include "platform/x11/server/ClientMessage.h"
#include "platform/x11/server/ClientProcess.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/EventKinds.h"
#include "platform/x11/server/PropertyWriter.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/RenderFormats.h"
#include "platform/x11/server/X11Screens.h"

#include <xcb/xcb_icccm.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace lumo::x11 {

namespace {

// Of the tray protocol's messages and the embedding protocol's information.
constexpr std::uint32_t requestDock = 0;
constexpr std::uint32_t embeddingVersion = 0;
constexpr std::uint32_t wantsToBeMapped = 1;

constexpr std::uint8_t rightButton = 3;

constexpr double iconSide = 22; // points

} // namespace

TrayIcon::TrayIcon(Connection &connection, const RenderFormats &formats, const X11Screens &screens,
                   MainLoop &mainLoop)
    : connection_(connection)
    , formats_(formats)
    , images_(connection)
    , side_(static_cast<int>(std::lround(iconSide * screens.pointSpace().scale())))
    , selection_(connection.atom("_NET_SYSTEM_TRAY_S" + std::to_string(connection.screenNumber())))
    , manager_(connection.atom("MANAGER"))
    , toolTip_(connection, formats, images_, screens, mainLoop)
    , announcements_(connection.events().on(event::clientMessage, [this](const auto &message) {
        if (message.type == manager_ && message.data.data32[1] == selection_) {
            adoptTray(message.data.data32[2]);
        }
    })) {
    connection_.internAtoms({"_NET_SYSTEM_TRAY_VISUAL", "_NET_SYSTEM_TRAY_ORIENTATION",
                             "_NET_SYSTEM_TRAY_OPCODE", "_XEMBED_INFO", "_NET_WM_PID",
                             "_NET_WM_NAME", "UTF8_STRING"});
    connection_.selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    lookForTray();
}

Handle TrayIcon::onTrayChange(std::function<void()> observer) {
    return trayChanged_.subscribe(std::move(observer));
}

Handle TrayIcon::onRightMouseUp(std::function<void(const Click &)> observer) {
    return clicked_.subscribe(std::move(observer));
}

void TrayIcon::setTitle(const StatusTitle &title) {
    if (title != title_) {
        title_ = title;
        paint();
    }
}

void TrayIcon::setToolTip(const std::string &text) {
    toolTip_.setText(text);
    if (window_) {
        setProperties();
    }
}

void TrayIcon::setHidden(bool isHidden) {
    if (isHidden == std::exchange(isHidden_, isHidden)) {
        return;
    }
    if (isHidden) {
        removeWindow();
    } else {
        lookForTray();
    }
}

void TrayIcon::lookForTray() {
    connection_.whenReplied<xcb_get_selection_owner_reply_t>(
        xcb_get_selection_owner(connection_, selection_),
        lifetime_.guard([this](const xcb_get_selection_owner_reply_t *reply) {
            if (reply != nullptr && reply->owner != XCB_NONE) {
                adoptTray(reply->owner);
            }
        }));
}

void TrayIcon::adoptTray(xcb_window_t tray) {
    if (tray != tray_) {
        setTray(tray, 0);
        const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_, tray, XCB_CW_EVENT_MASK, &mask);
        trayEnd_ = connection_.events().on(event::destroyNotify, tray,
                                           [this](const auto &) { leaveTray(); });
        removeWindow();
        askWhetherItDraws();
    }
    if (!isHidden_ && !window_) {
        dock();
    }
}

// The protocol has a tray state which way its icons run.
void TrayIcon::askWhetherItDraws() {
    connection_.whenReplied<xcb_get_property_reply_t>(
        xcb_get_property(connection_, 0, tray_, connection_.atom("_NET_SYSTEM_TRAY_ORIENTATION"),
                         XCB_ATOM_CARDINAL, 0, 1),
        lifetime_.guard([this, tray = tray_](const xcb_get_property_reply_t *reply) {
            if (tray == tray_ && reply != nullptr && reply->value_len == 1) {
                askForProcess();
            }
        }));
}

void TrayIcon::askForProcess() {
    if (!connection_.extensions().resource) {
        return;
    }
    connection_.whenReplied<xcb_res_query_client_ids_reply_t>(
        requestProcess(connection_, tray_),
        lifetime_.guard([this, tray = tray_](const xcb_res_query_client_ids_reply_t *reply) {
            if (tray == tray_) {
                setTray(tray, processOf(reply));
            }
        }));
}

void TrayIcon::setTray(xcb_window_t tray, std::int32_t process) {
    if (tray != tray_ || process != trayProcess_) {
        tray_ = tray;
        trayProcess_ = process;
        trayChanged_.emit();
    }
}

void TrayIcon::dock() {
    connection_.whenReplied<xcb_get_property_reply_t>(
        xcb_get_property(connection_, 0, tray_, connection_.atom("_NET_SYSTEM_TRAY_VISUAL"),
                         XCB_ATOM_VISUALID, 0, 1),
        lifetime_.guard([this, tray = tray_](const xcb_get_property_reply_t *reply) {
            if (reply == nullptr || tray != tray_ || isHidden_) {
                return;
            }
            const bool hasVisual = reply->format == 32 && reply->value_len == 1;
            const auto translucent = formats_.translucentVisual();
            dock(hasVisual && translucent != XCB_NONE &&
                 *static_cast<const xcb_visualid_t *>(xcb_get_property_value(reply)) ==
                     translucent);
        }));
}

void TrayIcon::dock(bool isTranslucent) {
    removeWindow();
    makeWindow(isTranslucent);
    sendClientMessage(connection_, tray_, XCB_EVENT_MASK_NO_EVENT, tray_,
                      connection_.atom("_NET_SYSTEM_TRAY_OPCODE"),
                      {XCB_CURRENT_TIME, requestDock, window_.id()});
}

void TrayIcon::makeWindow(bool isTranslucent) {
    isTranslucent_ = isTranslucent;
    const auto visual =
        isTranslucent ? formats_.translucentVisual() : connection_.screen().root_visual;
    const auto depth = isTranslucent ? std::uint8_t{32} : connection_.screen().root_depth;
    const auto side = static_cast<std::uint16_t>(side_);
    width_ = height_ = side_;
    colormap_ = OwnedColormap(connection_);
    xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap_.id(), connection_.root(),
                        visual);
    // Without alpha of its own it shows the tray's background around the dot.
    xcb_create_window_value_list_t values{};
    values.background_pixmap =
        isTranslucent ? XCB_BACK_PIXMAP_NONE : XCB_BACK_PIXMAP_PARENT_RELATIVE;
    values.event_mask = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                        XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_LEAVE_WINDOW;
    values.colormap = colormap_.id();
    window_ = OwnedWindow(connection_);
    xcb_create_window_aux(
        connection_, depth, window_.id(), connection_.root(), 0, 0, side, side, 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
        XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, &values);
    picture_ = OwnedPicture(connection_);
    xcb_render_create_picture(connection_, picture_.id(), window_.id(),
                              isTranslucent ? formats_.translucent() : formats_.opaque(visual), 0,
                              nullptr);
    setProperties();
    windowEvents_ = followWindow();
    pointerEvents_ = followPointer();
}

void TrayIcon::setProperties() {
    setIdentity(connection_, window_.id(), toolTip_.text());
    // Trays that do not force a size take this one.
    xcb_size_hints_t hints{};
    xcb_icccm_size_hints_set_min_size(&hints, side_, side_);
    xcb_icccm_set_wm_normal_hints(connection_, window_.id(), &hints);
    setValues(connection_, window_.id(), "_XEMBED_INFO", connection_.atom("_XEMBED_INFO"),
              {embeddingVersion, wantsToBeMapped});
}

void TrayIcon::removeWindow() {
    windowEvents_ = {};
    pointerEvents_ = {};
    toolTip_.pointerLeft();
    picture_.reset();
    window_.reset();
    colormap_.reset();
}

void TrayIcon::leaveTray() {
    trayEnd_.reset();
    removeWindow();
    setTray(XCB_NONE, 0);
    lookForTray();
}

std::array<Handle, 5> TrayIcon::followWindow() {
    auto &events = connection_.events();
    return {events.on(event::destroyNotify, window_.id(), [this](const auto &) { leaveTray(); }),
            events.on(event::reparentNotify, window_.id(),
                      [this](const auto &reparent) {
                          // A tray that ends may leave its icons to the root window, where they are
                          // ordinary windows.
                          if (reparent.parent == connection_.root()) {
                              leaveTray();
                          }
                      }),
            events.on(event::configureNotify, window_.id(),
                      [this](const auto &configure) {
                          width_ = configure.width;
                          height_ = configure.height;
                          paint();
                      }),
            events.on(event::expose, window_.id(),
                      [this](const auto &expose) {
                          if (expose.count == 0) {
                              paint();
                          }
                      }),
            events.on(event::buttonRelease, window_.id(),
                      [this](const auto &release) { handleRelease(release); })};
}

std::array<Handle, 4> TrayIcon::followPointer() {
    auto &events = connection_.events();
    return {
        events.on(event::motionNotify, window_.id(),
                  [this](const auto &motion) {
                      toolTip_.pointerMoved({motion.root_x - motion.event_x,
                                             motion.root_y - motion.event_y, width_, height_});
                  }),
        events.on(event::coreLeave, window_.id(), [this](const auto &) { toolTip_.pointerLeft(); }),
        events.on(event::unmapNotify, window_.id(),
                  [this](const auto &) { toolTip_.pointerLeft(); }),
        events.on(event::buttonPress, window_.id(), [this](const auto &) { toolTip_.dismiss(); })};
}

void TrayIcon::handleRelease(const xcb_button_release_event_t &event) {
    const drawing::PixelRect icon{event.root_x - event.event_x, event.root_y - event.event_y,
                                  width_, height_};
    const bool isInside = event.event_x >= 0 && event.event_y >= 0 && event.event_x < width_ &&
                          event.event_y < height_;
    if (event.detail == rightButton && isInside) {
        clicked_.emit({icon, event.root_x, event.root_y});
    }
}

void TrayIcon::paint() {
    if (!window_ || width_ < 1 || height_ < 1) {
        return;
    }
    const int side = std::min(width_, height_);
    const auto image =
        images_.find(std::make_shared<const Image>(freedesktop::dotPicture(title_, side)));
    if (!image) {
        return;
    }
    const OwnedPicture source(connection_);
    xcb_render_create_picture(connection_, source.id(), image->pixmap.id(), formats_.translucent(),
                              0, nullptr);
    if (isTranslucent_) {
        const auto all = toProtocol({0, 0, width_, height_});
        xcb_render_fill_rectangles(connection_, XCB_RENDER_PICT_OP_CLEAR, picture_.id(), {}, 1,
                                   &all);
    } else {
        xcb_clear_area(connection_, 0, window_.id(), 0, 0, 0, 0);
    }
    xcb_render_composite(connection_, XCB_RENDER_PICT_OP_OVER, source.id(), XCB_NONE, picture_.id(),
                         0, 0, 0, 0, static_cast<std::int16_t>((width_ - side) / 2),
                         static_cast<std::int16_t>((height_ - side) / 2),
                         static_cast<std::uint16_t>(side), static_cast<std::uint16_t>(side));
}

} // namespace lumo::x11
