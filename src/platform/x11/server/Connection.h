#pragma once

#include "platform/x11/server/EventRouter.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace lumo::x11 {

// Frees what libxcb hands out with malloc.
struct FreeDeleter {
    void operator()(void *memory) const noexcept;
};

template <class T>
using XcbPointer = std::unique_ptr<T, FreeDeleter>;

// The extensions that the server offers, as negotiated at connection.
struct Extensions {
    bool composite = false; // 0.4: named pixmaps, automatic redirection
    bool damage = false;
    bool render = false;
    bool resource = false; // 1.2: process identifiers of clients
    bool shm = false;      // 1.2: memory that is shared by passing a file
    bool shape = false;    // 1.1: input shapes
    bool randr = false;    // 1.5: monitors
    bool xfixes = false;   // 2.0: regions and window shapes
    bool xinput = false;   // 2.2: raw events, also while another client grabs the devices
    bool xkb = false;
};

// Lumo's own connection to the X server. Main thread only.
//
// Requests about other programs' windows lose races with those windows' deaths all the time. So an
// error never ends the program: one that comes in place of a reply makes that reply null, all
// others are dropped.
class Connection {
  public:
    // Connects to the named display, or to the one that DISPLAY names when the name is null. Null
    // when that failed.
    static std::unique_ptr<Connection> open(const char *displayName);

    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    // For the request functions of libxcb.
    xcb_connection_t *xcb() const { return connection_; }
    operator xcb_connection_t *() const { return connection_; }

    // As it was opened by; empty when that was the one that DISPLAY names.
    const std::string &displayName() const { return displayName_; }
    const xcb_screen_t &screen() const { return *screen_; }
    int screenNumber() const { return screenNumber_; }
    xcb_window_t root() const { return screen_->root; }
    const xcb_setup_t &setup() const { return *xcb_get_setup(connection_); }
    const xcb_visualtype_t *visual(xcb_visualid_t id) const; // of the screen; null: it has none
    const Extensions &extensions() const { return extensions_; }

    // The atom of that name, which is made when the server has none. Waits for the server the first
    // time a name is asked for, so ask for all names while starting; see internAtoms().
    xcb_atom_t atom(std::string_view name);

    // Fetches many atoms in one round trip.
    void internAtoms(std::span<const std::string_view> names);
    void internAtoms(std::initializer_list<std::string_view> names);

    // To receive events, in the order of their arrival; see EventKinds.h.
    EventRouter &events() { return events_; }

    // Calls the observer at the end of each dispatch(): the moment to act once on what a batch of
    // events and replies has changed.
    Handle onDispatched(std::function<void()> observer);

    // Selects these events of the root window beside those that were selected before. No other code
    // sets the root window's event mask on this connection.
    void selectRootEvents(std::uint32_t eventMask);

    // True for a window that was made on this connection.
    bool isOwn(xcb_window_t window) const;

    // Calls the function once with the reply to a request, in the order of requests and interleaved
    // correctly with events; with null when the request failed. The cookie is that of an ordinary
    // (checked) request.
    template <class Reply, class Cookie>
    void whenReplied(Cookie cookie, std::function<void(const Reply *)> function) {
        awaitReply(cookie.sequence, [function = std::move(function)](const void *reply, bool) {
            function(static_cast<const Reply *>(reply));
        });
    }

    // Calls the function once the server has handled a request without a reply, after all events
    // from before that; with whether it succeeded. The cookie is that of a checked request made
    // after all others that are waited for.
    void whenHandled(xcb_void_cookie_t cookie, std::function<void(bool succeeded)> function);

    // Waits for the reply; null when the request failed. For start-up only: nothing that runs while
    // the overlay is showing may wait for the server.
    template <class Reply, class Cookie>
    XcbPointer<Reply> wait(Cookie cookie, Reply *(*replyFunction)(xcb_connection_t *, Cookie,
                                                                  xcb_generic_error_t **)) const {
        return XcbPointer<Reply>(replyFunction(connection_, cookie, nullptr));
    }

    // Calls the observers of everything that has arrived.
    void dispatch();

    // Dispatches what arrives until the condition holds, for at most so many seconds. For start-up
    // only. False when the time was up or the server went away.
    bool dispatchUntil(const std::function<bool()> &condition, double seconds = 2);

    // True when something has been read from the server and waits for dispatch(), which the file
    // descriptor no longer tells. Reads nothing itself.
    bool hasUndispatched();

    // Sends what has been asked for so far.
    void flush();

    // True once the server is gone; nothing but destruction makes sense then.
    bool isLost() const;

    int fileDescriptor() const;

    // Bytes sent to the server so far: the same before and after means that no request was made.
    std::uint64_t bytesSent() const;

  private:
    using ReplyFunction = std::function<void(const void *reply, bool failed)>;

    struct PendingReply {
        std::uint32_t sequence;
        ReplyFunction function;
    };

    Connection(xcb_connection_t *connection, std::string displayName, int screenNumber);

    void negotiateExtensions();
    void awaitReply(std::uint32_t sequence, ReplyFunction function);
    bool firstReplyHasArrived();
    void deliverFirstReply();
    XcbPointer<xcb_generic_event_t> nextEvent();

    xcb_connection_t *connection_;
    std::string displayName_;
    xcb_screen_t *screen_ = nullptr;
    int screenNumber_;
    Extensions extensions_;
    std::unordered_map<std::string, xcb_atom_t> atoms_;
    std::uint32_t rootEventMask_ = 0;
    EventRouter events_;
    Signal<> dispatched_;
    XcbPointer<xcb_generic_event_t> undispatchedEvent_;
    std::deque<PendingReply> pendingReplies_;
    bool firstReplyArrived_ = false; // arrivedReply_ is that of the first of pendingReplies_
    XcbPointer<void> arrivedReply_;  // null when that request failed, or has no reply
    bool arrivedFailure_ = false;
};

} // namespace lumo::x11
