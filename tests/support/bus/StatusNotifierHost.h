#pragma once

#include "bus/BusService.h"
#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Handle.h"

#include <string>
#include <vector>

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl*): as it is generated
using DbusStatusNotifierWatcher = struct _DbusStatusNotifierWatcher;

namespace lumo::test {

// A panel on the message bus: the watcher of status items, and once it says so a host that shows
// them.
class StatusNotifierHost {
  public:
    explicit StatusNotifierHost(const std::string &address);
    StatusNotifierHost(const StatusNotifierHost &) = delete;
    StatusNotifierHost &operator=(const StatusNotifierHost &) = delete;

    // What each item called itself when it registered.
    const std::vector<std::string> &items() const { return items_; }

    // Becomes a host or is none any more, and announces it.
    void setHost(bool isHost);

    // Calls a method of the last item that takes a place.
    void callItem(const char *method, int x, int y);

    // Asks the last item for all its properties, whose text properties() is once they have come;
    // empty until then.
    void askForProperties();
    const std::string &properties() const { return properties_; }

    // The names of the signals that the last item has sent.
    std::vector<std::string> takeSignals();

  private:
    struct Methods;

    void listen(const char *item);

    BusService service_;
    freedesktop::GlibPointer<DbusStatusNotifierWatcher> watcher_;
    std::vector<std::string> items_;
    std::vector<std::string> signals_;
    std::string properties_;
    Handle registrations_;
    Handle itemSignals_;
    freedesktop::AsyncCalls calls_;
};

} // namespace lumo::test
