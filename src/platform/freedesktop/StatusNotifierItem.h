#pragma once

#include "platform/StatusItem.h"
#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*): as they are generated
using DbusStatusNotifierItem = struct _DbusStatusNotifierItem;
using DbusStatusNotifierWatcher = struct _DbusStatusNotifierWatcher;
// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)

namespace lumo::freedesktop {

class SessionBus;

// The status item as freedesktop.org's StatusNotifierItem on the session bus, drawn by a host: a
// panel. Offers itself again whenever the bus, its watcher of such items or a host comes back. Main
// thread only.
class StatusNotifierItem {
  public:
    // The bus outlives the item.
    explicit StatusNotifierItem(SessionBus &bus);
    ~StatusNotifierItem();
    StatusNotifierItem(const StatusNotifierItem &) = delete;
    StatusNotifierItem &operator=(const StatusNotifierItem &) = delete;

    void setTitle(const StatusTitle &title);
    void setToolTip(const std::string &text);

    // Where something better shows the item, so that no host has to.
    void setHidden(bool isHidden);

    // True while there is a host, which shows the item unless it is hidden.
    bool hasHost() const { return hasHost_; }

    // The process that keeps the list of items, and that nearly always is the host's; 0 when
    // unknown.
    std::int32_t watcherProcess() const { return watcherProcess_; }

    // Calls the observer after hasHost() or watcherProcess() changed.
    Handle onHostChange(std::function<void()> observer);

    // Calls the observer when the host says that the user wants the item's menu, with the place on
    // the root window in pixels.
    Handle onContextMenu(std::function<void(int x, int y)> observer);

  private:
    struct Methods;

    void connect();
    void disconnect();
    void handleWatcher(const char *uniqueName);
    void adoptWatcher(GlibPointer<DbusStatusNotifierWatcher> watcher);
    void leaveWatcher();
    void askForHost();
    void askForProcess(const char *uniqueName);
    void setHost(bool hasHost, std::int32_t watcherProcess);

    SessionBus &bus_;
    GlibPointer<DbusStatusNotifierItem> item_;
    GlibPointer<DbusStatusNotifierWatcher> watcher_; // null while there is none
    StatusTitle title_;
    bool isHidden_ = false;
    bool hasHost_ = false;
    std::int32_t watcherProcess_ = 0;
    Signal<> hostChanged_;
    Signal<int, int> contextMenu_;
    std::vector<Handle> methodCalls_;
    Handle busChanges_;
    Handle export_;       // while there is a bus
    Handle watcherWatch_; // while there is a bus
    Handle hostsCome_;    // while there is a watcher
    Handle hostsGo_;      // while there is a watcher
    AsyncCalls calls_;
};

} // namespace lumo::freedesktop
