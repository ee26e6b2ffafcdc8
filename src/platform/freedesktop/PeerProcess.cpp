#include "platform/freedesktop/PeerProcess.h"

#include <sys/socket.h>

namespace lumo::freedesktop {

std::int32_t peerProcess(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

} // namespace lumo::freedesktop
