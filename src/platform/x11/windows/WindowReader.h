#pragma once

#include "platform/x11/server/PendingReads.h"
#include "platform/x11/windows/WindowFacts.h"
#include "platform/x11/windows/WindowTree.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>

namespace lumo::x11 {

class Connection;
class RootState;

// Asks the server for what the window tree wants and hands it the replies. No request here waits
// for its reply, and a reply is dropped when its window has gone meanwhile.
class WindowReader {
  public:
    // The arguments outlive the reader.
    WindowReader(Connection &connection, WindowTree &tree, const RootState &root);

    // Reads the whole tree: the children of the root window, all about each, and the managed
    // windows in them.
    void readAll();

    // Asks for what the tree wants now.
    void requestWanted();

    // Selects focus and enter events of all windows of the tree, or no longer.
    void selectFocusEvents(bool selects);

    // The part of a window that a property tells of; none for other properties.
    std::uint32_t partOf(xcb_atom_t property) const;

    // True when no reply is missing.
    bool isSettled() const { return replies_.isEmpty(); }

  private:
    using Read = WindowTree::Read;

    template <class Reply, class Cookie>
    void request(const Read &read, std::uint32_t part, Cookie cookie,
                 std::function<void(WindowFacts &, const Reply *)> store);
    void selectEvents(xcb_window_t window);
    void requestProperties(const Read &read);
    void requestProcess(const Read &read);
    void requestStructure(const Read &read);
    void requestShape(const Read &read);
    void requestInset(const Read &read);
    void findClients();
    void findClientIn(xcb_window_t window, int depth);
    void findClientInChildren(const xcb_query_tree_reply_t &tree, int depth);

    Connection &connection_;
    WindowTree &tree_;
    const RootState &root_;
    WindowProperties properties_;
    ReplyQueue replies_;
    bool selectsFocusEvents_ = false;
};

} // namespace lumo::x11
