#pragma once

#include "drawing/PixelRect.h"
#include "platform/x11/server/PendingReads.h"
#include "platform/x11/windows/MirrorChange.h"
#include "platform/x11/windows/RootState.h"
#include "platform/x11/windows/StackingLayer.h"
#include "platform/x11/windows/WindowFacts.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace lumo::x11 {

class Connection;

// One child of the root window, with what is known of the managed window in it.
struct MirrorWindow {
    xcb_window_t frame = XCB_NONE;  // the child of the root window
    xcb_window_t client = XCB_NONE; // the managed window inside, or the frame itself
    drawing::PixelRect geometry;    // of the frame, its border included
    int borderWidth = 0;            // of the frame, in pixels on each side
    bool isMapped = false;
    bool isInputOnly = false;
    bool isOverrideRedirect = false; // of the frame
    bool isDescribed = false; // all that is below has been read; false for an instant at first
    bool isManaged = false;   // a window manager handles the client
    bool isMinimized = false;
    bool isPutAway = false; // minimised for certain; some managers leave such a window mapped
    bool isDock = false;
    bool skipsTaskbar = false;
    bool isOwn = false;            // made on this connection, or a frame around an overlay
    Edges invisibleEdges;          // parts of the frame that show nothing
    std::uint64_t shapeSerial = 0; // 0 while it is a rectangle, else another one after each change
    std::optional<xcb_window_t> transientFor; // as WindowFacts::transientFor
    std::uint8_t depth = 0;
    xcb_visualid_t visual = XCB_NONE;
    StackingLayer stackingLayer = StackingLayer::normal;
    double opacity = 1;
    std::int32_t processIdentifier = 0; // 0 when unknown
    std::string instanceName;           // the two parts of WM_CLASS
    std::string className;
    std::optional<std::string> title;
    std::optional<std::uint32_t> desktop; // all bits set when on all desktops

    // What the user sees of the window, as far as a rectangle can tell.
    drawing::PixelRect visibleArea() const;

    // Mapped with pixels, and somebody else's.
    bool canBeSeen() const { return isMapped && !isInputOnly && !isOwn && !isPutAway; }

    bool operator==(const MirrorWindow &) const = default;
};

// The window tree as the server has it, kept current by events, so that reading it costs no
// request. Main thread only. Construction waits for the server; nothing after it does.
class WindowMirror {
  public:
    explicit WindowMirror(Connection &connection);
    ~WindowMirror();
    WindowMirror(const WindowMirror &) = delete;
    WindowMirror &operator=(const WindowMirror &) = delete;

    // The children of the root window from the bottom to the top, unmapped ones included.
    const std::vector<xcb_window_t> &stacking() const { return stacking_; }

    // By frame or by client; null when there is no such window. Valid until control returns to the
    // loop.
    const MirrorWindow *find(xcb_window_t window) const;

    // The managed window that has the focus, as the window manager says.
    std::optional<xcb_window_t> activeWindow() const { return root_.activeWindow(); }

    // Empty when no window manager runs or it has no name.
    const std::string &windowManagerName() const { return root_.windowManagerName(); }

    // Whether the window manager says that it understands the hint.
    bool windowManagerSupports(xcb_atom_t hint) const { return root_.supports(hint); }

    // Whether a window is on the current desktop, on all of them, or on none that anyone names.
    bool isOnCurrentDesktop(const MirrorWindow &window) const;

    // Has the frame that a manager makes around that window of ours count as ours as well, until
    // the window is destroyed. Others of ours may lie in windows that are somebody else's.
    void claimFrameOf(xcb_window_t window) { claimed_.insert(window); }

    // A number that is another one after each change.
    std::uint64_t revision() const { return revision_; }

    // The same for changes of anything but what MirrorChange::appearance covers.
    std::uint64_t identityRevision() const { return identityRevision_; }

    // Calls the observer after each batch of events that changed something.
    Handle onChange(std::function<void(const MirrorChange &)> observer);

    // True when nothing that is known to have changed is still to be read.
    bool isSettled() const;

  private:
    // Among what is read of a window, as bits: where a managed window is in its frame.
    static constexpr std::uint32_t insetBit = 1U << (WindowProperties::count + 4);

    // A window that is watched: a child of the root window or one that has been.
    struct Node {
        std::uint64_t serial = 0;    // tells it from others that had the same identifier
        xcb_window_t top = XCB_NONE; // the child of the root that it is in; none while unknown
        std::uint64_t placement = 0; // changes whenever the window gets another parent
        PendingReads reads;
        std::uint32_t known = 0; // what has been read at least once
        WindowFacts facts;
        drawing::PixelRect inFrame; // where it was within its top when that was last read
    };

    struct TopLevel {
        MirrorWindow window;
        std::vector<xcb_window_t> inside; // the watched windows inside, in order of arrival
    };

    void start();
    std::vector<Handle> subscribe();
    void handleCreate(const xcb_create_notify_event_t &event);
    void handleConfigure(const xcb_configure_notify_event_t &event);
    void handleReparent(const xcb_reparent_notify_event_t &event);
    void handleMap(const xcb_map_notify_event_t &event);
    void handleGravity(const xcb_gravity_notify_event_t &event);
    void finishBatch();

    Node &watch(xcb_window_t window);
    TopLevel &addTopLevel(xcb_window_t window);
    void removeTopLevel(xcb_window_t window);
    void forget(xcb_window_t window);
    void putInside(xcb_window_t window, xcb_window_t top);
    void placeUnder(xcb_window_t window, xcb_window_t parent);
    void leaveTop(xcb_window_t window);
    void placeAbove(xcb_window_t window, xcb_window_t sibling);
    void setOverrideRedirect(TopLevel &top, bool isOverrideRedirect);
    void setMapped(xcb_window_t window, bool isMapped);
    TopLevel *findTop(xcb_window_t window);

    void want(xcb_window_t window, std::uint32_t things);
    void wantFacts(xcb_window_t window);
    void wantStructure(xcb_window_t window);
    void wantInset(xcb_window_t window);
    static bool isDescribed(const TopLevel &top, const Node &frame, const Node &client);
    void requestReads();
    void request(xcb_window_t window, Node &node);
    template <class Reply, class Cookie>
    void read(xcb_window_t window, std::uint32_t thing, Cookie cookie,
              std::function<void(Node &, const Reply *)> apply);
    void applyAttributes(xcb_window_t window, const xcb_get_window_attributes_reply_t *reply);
    void applyGeometry(xcb_window_t window, const xcb_get_geometry_reply_t *reply);
    void requestInset(xcb_window_t window, xcb_window_t top);
    void applyShape(xcb_window_t window, bool isShaped);
    void setGeometry(TopLevel &top, const drawing::PixelRect &geometry);
    void readTree();
    void applyTree(const xcb_query_tree_reply_t *reply);
    void findTopOf(xcb_window_t window, xcb_window_t ancestor);
    void findClients();
    void findClientIn(xcb_window_t window, int depth);
    void describe(xcb_window_t window);
    xcb_window_t clientOf(const TopLevel &top) const;
    Edges invisibleEdgesOf(const TopLevel &top, const Node &client, const Edges &before) const;
    void note(bool MirrorChange::*what);

    Connection &connection_;
    WindowProperties properties_;
    ReplyQueue replies_;
    MirrorChange change_;
    RootState root_;
    std::vector<xcb_window_t> stacking_;
    std::unordered_map<xcb_window_t, TopLevel> topLevels_;
    std::unordered_map<xcb_window_t, Node> nodes_;
    std::unordered_set<xcb_window_t> claimed_;
    std::vector<xcb_window_t> unread_; // those with something to be asked for
    std::uint64_t lastSerial_ = 0;
    bool treeIsUnread_ = true;
    bool hasStarted_ = false;
    std::uint64_t revision_ = 1;
    std::uint64_t identityRevision_ = 1;
    xcb_window_t describedActive_ = XCB_NONE; // the active window when it was last looked at
    Signal<MirrorChange> changes_;
    std::vector<Handle> events_;
    Handle batches_;
};

} // namespace lumo::x11
