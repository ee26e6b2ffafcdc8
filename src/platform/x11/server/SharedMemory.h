#pragma once

#include "platform/x11/server/ServerResource.h"

#include <xcb/shm.h>

#include <cstddef>
#include <cstdint>

namespace lumo::x11 {

using OwnedSegment = ServerResource<xcb_shm_detach>;

// Memory that the X server on this machine reads and writes as well. Move-only; the connection must
// outlive it. Main thread only.
class SharedMemory {
  public:
    SharedMemory() = default;

    // At least that many bytes, zero at first. Empty when this system has no such memory to give.
    // Whether the server takes it shows with the first request that uses the segment.
    SharedMemory(xcb_connection_t *connection, std::size_t size);
    ~SharedMemory();
    SharedMemory(SharedMemory &&other) noexcept;
    SharedMemory &operator=(SharedMemory &&other) noexcept;
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;

    explicit operator bool() const { return bytes_ != nullptr; }
    std::uint8_t *bytes() const { return bytes_; }
    std::size_t size() const { return size_; }
    xcb_shm_seg_t segment() const { return segment_.id(); }

  private:
    OwnedSegment segment_;
    std::uint8_t *bytes_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace lumo::x11
