#include "platform/wayland/client/SharedBuffer.h"

#include "platform/freedesktop/FileDescriptor.h"

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>

#include <utility>

namespace lumo::wayland {

SharedBuffer::SharedBuffer(wl_shm &memory, int width, int height, std::function<void()> released)
    : width_(width)
    , height_(height)
    , released_(std::move(released)) {
    const freedesktop::FileDescriptor file(memfd_create("lumo", MFD_CLOEXEC));
    void *shared = file && ftruncate(file.get(), static_cast<off_t>(size())) == 0
                       ? mmap(nullptr, size(), PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0)
                       : MAP_FAILED;
    if (shared == MAP_FAILED) {
        return;
    }
    pixels_ = static_cast<std::uint32_t *>(shared);
    auto *pool = wl_shm_create_pool(&memory, file.get(), static_cast<std::int32_t>(size()));
    buffer_.reset(
        wl_shm_pool_create_buffer(pool, 0, width, height, width * 4, WL_SHM_FORMAT_ARGB8888));
    wl_shm_pool_destroy(pool);
    static const wl_buffer_listener listener = {[](void *data, wl_buffer *) {
        auto &self = *static_cast<SharedBuffer *>(data);
        self.isLent_ = false;
        self.released_();
    }};
    wl_buffer_add_listener(buffer_.get(), &listener, this);
}

SharedBuffer::~SharedBuffer() {
    if (pixels_ != nullptr) {
        munmap(pixels_, size());
    }
}

std::size_t SharedBuffer::size() const {
    return static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 4;
}

void SharedBuffer::expectDrawing(int y, int height) const {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const auto row = static_cast<std::size_t>(width_) * 4;
    const auto begin = static_cast<std::size_t>(y) * row / page * page;
    const auto end = static_cast<std::size_t>(y + height) * row;
    // By reading, which maps 16 pages at a time, and what is mapped so can be written to. Refused
    // before Linux 5.14: then the pages come one by one.
    madvise(reinterpret_cast<std::byte *>(pixels_) + begin, end - begin, MADV_POPULATE_READ);
}

void SharedBuffer::leaveToCompositor() const {
    madvise(pixels_, size(), MADV_DONTNEED);
}

wl_buffer *SharedBuffer::lend() {
    isLent_ = true;
    return buffer_.get();
}

} // namespace lumo::wayland
