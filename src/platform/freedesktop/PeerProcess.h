#pragma once

#include <cstdint>

namespace lumo::freedesktop {

// The process that made the local socket which this one is connected to; 0 when unknown.
std::int32_t peerProcess(int socket);

} // namespace lumo::freedesktop
