#include "platform/x11/server/ConnectionWatch.h"

#include "platform/freedesktop/GlibMainLoop.h"
#include "platform/x11/server/Connection.h"

#include <utility>

namespace lumo::x11 {

Handle watch(freedesktop::GlibMainLoop &loop, Connection &connection,
             std::function<void()> onLost) {
    return loop.watch(connection.fileDescriptor(),
                      {.prepare =
                           [&connection] {
                               connection.flush();
                               return connection.hasUndispatched() || connection.isLost();
                           },
                       .dispatch =
                           [&connection, lost = std::move(onLost)] {
                               connection.dispatch();
                               if (!connection.isLost()) {
                                   return true;
                               }
                               const auto report = lost; // which may release the watch
                               report();
                               return false;
                           }});
}

} // namespace lumo::x11
