#pragma once

#include "platform/x11/server/PendingReads.h"
#include "platform/x11/windows/MirrorChange.h"
#include "platform/x11/windows/MirrorWindow.h"
#include "platform/x11/windows/WindowFacts.h"

#include <xcb/shape.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace lumo::x11 {

// What is read of a window, as bits: its properties by their indices, and these.
namespace windowPart {
inline constexpr std::uint32_t process = 1U << WindowProperties::count;
inline constexpr std::uint32_t attributes = process << 1U;
inline constexpr std::uint32_t geometry = process << 2U;
inline constexpr std::uint32_t shape = process << 3U;
inline constexpr std::uint32_t inset = process << 4U; // where a managed window is in its frame

inline constexpr std::uint32_t facts = attributes - 1; // the properties and the process
inline constexpr std::uint32_t structure = attributes | geometry | shape;
} // namespace windowPart

// How the X server numbers windows.
struct WindowNumbers {
    xcb_window_t root = XCB_NONE;
    std::uint32_t clientBits = 0; // which bits of a number tell the client that made the window
    std::uint32_t ownClient = 0;  // those of this program's connection
    std::uint32_t interfaceClient = 0; // those of the toolkit's connection; 0 before it has one

    bool isOwn(xcb_window_t window) const { return (window & clientBits) == ownClient; }

    bool isOfThisProgram(xcb_window_t window) const {
        return isOwn(window) || (interfaceClient != 0 && (window & clientBits) == interfaceClient);
    }

    // Another number for each client, from 1.
    std::int32_t clientOf(xcb_window_t window) const {
        return static_cast<std::int32_t>((window & clientBits) / (~clientBits + 1));
    }

    // Made by the server for itself, as the window that compositing managers draw on.
    bool isServers(xcb_window_t window) const { return (window & clientBits) == 0; }
};

// The window tree as far as events and replies have told of it: the children of the root window in
// their stacking order, and the managed windows in them. It asks the server for nothing itself, but
// says what is to be asked for, see takeWanted().
class WindowTree {
  public:
    // Parts of one window to be read.
    struct Read {
        xcb_window_t window;
        std::uint64_t serial;    // tells the window from others that had the same number
        std::uint32_t parts;     // of windowPart
        xcb_window_t top;        // for windowPart::inset: within which window
        std::uint64_t placement; // for windowPart::inset
    };

    // The search for the child of the root that a window is in, at one of its ancestors.
    struct TopSearch {
        xcb_window_t window;
        std::uint64_t placement; // it ends when the window gets another parent
        xcb_window_t ancestor;   // whose parent is asked for; at first the window itself
    };

    // What is to be asked of the server, in this order.
    struct Wanted {
        std::vector<xcb_window_t> propertyAndStructureEvents; // of these windows
        std::vector<xcb_window_t> shapeEvents;
        std::vector<TopSearch> searches;
        std::vector<Read> reads;
    };

    explicit WindowTree(const WindowNumbers &numbers)
        : numbers_(numbers) {}

    // The children of the root window from the bottom to the top, unmapped ones included.
    const std::vector<xcb_window_t> &stacking() const { return stacking_; }

    // By frame or by client; null when there is no such window. Valid until the next change.
    const MirrorWindow *find(xcb_window_t window) const;

    bool contains(xcb_window_t window) const { return nodes_.contains(window); }

    ChangeRecord &changes() { return changes_; }
    const ChangeRecord &changes() const { return changes_; }

    // What is wanted and was not taken before. What is being read already is wanted again after it
    // has been read.
    Wanted takeWanted();

    // True when nothing is wanted.
    bool isSettled() const;

    // Events about any window.
    void handle(const xcb_create_notify_event_t &event);
    void handle(const xcb_destroy_notify_event_t &event);
    void handle(const xcb_map_notify_event_t &event);
    void handle(const xcb_unmap_notify_event_t &event);
    void handle(const xcb_reparent_notify_event_t &event);
    void handle(const xcb_configure_notify_event_t &event);
    void handle(const xcb_gravity_notify_event_t &event);
    void handle(const xcb_circulate_notify_event_t &event);
    void handle(const xcb_shape_notify_event_t &event);

    // The parts of a window have changed or are of interest; nothing when it is not in the tree.
    void want(xcb_window_t window, std::uint32_t parts);
    void wantEverything();

    // Replies. A null reply is that of a request that failed.
    void setChildren(std::vector<xcb_window_t> children); // of the root window, bottom to top
    void applyParent(const TopSearch &search, const xcb_query_tree_reply_t *reply);
    void applyAttributes(xcb_window_t window, const xcb_get_window_attributes_reply_t *reply);
    void applyGeometry(xcb_window_t window, const xcb_get_geometry_reply_t *reply);
    void applyShape(xcb_window_t window, bool isShaped);
    void applyInset(const Read &read, const drawing::PixelRect &inFrame);

    // Ends the read of one part: has the function store what the reply says in the facts it is
    // given, unless the window has gone since.
    template <class Store>
    void finish(const Read &read, std::uint32_t part, Store store) {
        if (auto *node = nodeOf(read)) {
            node->reads.finished(part);
            node->known |= part;
            store(node->facts);
            if ((node->known & windowPart::facts) == windowPart::facts) {
                redescribe(node->top);
            }
        }
    }

    // Takes a managed window in that was found inside another one.
    void adopt(xcb_window_t window);

    // Has the frame that a window manager makes around that window of ours count as ours as well,
    // until the window is destroyed.
    void claimFrameOf(xcb_window_t window) { claimed_.insert(window); }

    // Has the windows of the client that made this one count as this program's.
    void setInterfaceWindow(xcb_window_t window);

    // What descriptions depend on beside the windows.
    void setActiveWindow(std::optional<xcb_window_t> window);
    void setManagement(Management management);

  private:
    // A window that is watched: a child of the root window or one that has been.
    struct Node {
        std::uint64_t serial = 0;
        xcb_window_t top = XCB_NONE; // the child of the root that it is in; none while unknown
        std::uint64_t placement = 0; // changes whenever the window gets another parent
        PendingReads reads;
        std::uint32_t known = 0; // the parts that have been read at least once
        WindowFacts facts;
        drawing::PixelRect inFrame; // where it was within its top when that was last read
    };

    struct TopLevel {
        MirrorWindow window;
        std::vector<xcb_window_t> inside; // the watched windows inside, in order of arrival
    };

    Node *nodeOf(const Read &read);
    TopLevel *findTop(xcb_window_t window);
    Node &watch(xcb_window_t window);
    TopLevel &addTopLevel(xcb_window_t window);
    void removeTopLevel(xcb_window_t window);
    void forget(xcb_window_t window);
    void putInside(xcb_window_t window, xcb_window_t top);
    void moveIntoParent(xcb_window_t window, xcb_window_t parent);
    void leaveTop(xcb_window_t window);
    void placeAbove(xcb_window_t window, xcb_window_t sibling);
    void searchTop(xcb_window_t window, xcb_window_t ancestor);
    void setOverrideRedirect(TopLevel &top, bool isOverrideRedirect);
    void setMapped(xcb_window_t window, bool isMapped);
    void setGeometry(TopLevel &top, const drawing::PixelRect &geometry);
    void wantInset(xcb_window_t window);
    void redescribe(xcb_window_t window);
    xcb_window_t clientOf(const TopLevel &top) const;
    std::int32_t processOf(xcb_window_t window) const;
    void redescribeAll();
    void note(bool MirrorChange::*what) { changes_.note(what); }

    WindowNumbers numbers_;
    std::vector<xcb_window_t> stacking_;
    std::unordered_map<xcb_window_t, TopLevel> topLevels_;
    std::unordered_map<xcb_window_t, Node> nodes_;
    std::unordered_set<xcb_window_t> claimed_;
    std::vector<xcb_window_t> unread_; // those with something to be read
    Wanted wanted_;                    // all but the reads
    ChangeRecord changes_;
    std::uint64_t lastSerial_ = 0;
    std::optional<xcb_window_t> activeWindow_;
    Management management_ = Management::none;
};

} // namespace lumo::x11
