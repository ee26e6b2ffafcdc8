#pragma once

#include "platform/StatusItem.h"
#include "support/Handle.h"
#include "support/Signal.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

using GDBusConnection = struct _GDBusConnection; // NOLINT(bugprone-reserved-identifier,cert-*)
using GVariant = struct _GVariant;               // NOLINT(bugprone-reserved-identifier,cert-*)

namespace lumo::freedesktop {

class Cancellation;
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
    struct Vtable;

    void connect();
    void disconnect();
    void watcherAppeared();
    void askForHost();
    void askForProcess();
    void setHost(bool hasHost, std::int32_t watcherProcess);
    GVariant *property(const std::string &name) const;
    void emit(const char *signal, GVariant *arguments = nullptr);

    SessionBus &bus_;
    StatusTitle title_;
    std::string toolTip_;
    bool isHidden_ = false;
    bool hasHost_ = false;
    std::int32_t watcherProcess_ = 0;
    GDBusConnection *connection_ = nullptr; // while the item is exported on it
    unsigned exported_ = 0;
    unsigned watch_ = 0;
    unsigned hostSignals_ = 0;
    std::unique_ptr<Cancellation> cancellation_;
    Signal<> hostChanged_;
    Signal<int, int> contextMenu_;
    Handle busChanges_;
};

} // namespace lumo::freedesktop
