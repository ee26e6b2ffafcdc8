#include "platform/x11/server/SharedMemory.h"

#include "platform/freedesktop/FileDescriptor.h"

#include <sys/mman.h>
#include <unistd.h>

#include <utility>

namespace lumo::x11 {

SharedMemory::SharedMemory(xcb_connection_t *connection, std::size_t size) {
    freedesktop::FileDescriptor file(memfd_create("lumo", MFD_CLOEXEC));
    void *memory = file && ftruncate(file.get(), static_cast<off_t>(size)) == 0
                       ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0)
                       : MAP_FAILED;
    if (memory == MAP_FAILED) {
        return;
    }
    bytes_ = static_cast<std::uint8_t *>(memory);
    size_ = size;
    segment_ = OwnedSegment(connection);
    // Closes the file once it is sent.
    xcb_shm_attach_fd(connection, segment_.id(), file.release(), 0);
}

SharedMemory::~SharedMemory() {
    if (bytes_ != nullptr) {
        munmap(bytes_, size_);
    }
}

SharedMemory::SharedMemory(SharedMemory &&other) noexcept
    : segment_(std::move(other.segment_))
    , bytes_(std::exchange(other.bytes_, nullptr))
    , size_(std::exchange(other.size_, 0)) {
}

SharedMemory &SharedMemory::operator=(SharedMemory &&other) noexcept {
    std::swap(segment_, other.segment_);
    std::swap(bytes_, other.bytes_);
    std::swap(size_, other.size_);
    return *this;
}

} // namespace lumo::x11
