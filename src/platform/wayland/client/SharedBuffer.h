#pragma once

#include "platform/wayland/client/ProtocolPointers.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace lumo::wayland {

// Pixels that this process and the compositor share: four bytes each, blue, green, red and alpha,
// premultiplied, in rows from the top without padding. Transparent at first. Main thread only.
class SharedBuffer {
  public:
    // Calls the function whenever the compositor has let go of it.
    SharedBuffer(wl_shm &memory, int width, int height, std::function<void()> released);
    ~SharedBuffer();
    SharedBuffer(const SharedBuffer &) = delete;
    SharedBuffer &operator=(const SharedBuffer &) = delete;

    // False when this system has no memory to give.
    explicit operator bool() const { return pixels_ != nullptr; }

    int width() const { return width_; }
    int height() const { return height_; }
    std::uint32_t *pixels() const { return pixels_; }

    // Brings rows that the buffer has into this process's memory at once, which is far cheaper than
    // page by page as drawing touches them.
    void expectDrawing(int y, int height) const;

    // Has the pixels take up none of this process's memory until it touches them again; the
    // compositor has them as they are.
    void leaveToCompositor() const;

    // To be attached to a surface: from then on the compositor may read it.
    wl_buffer *lend();

    bool isLent() const { return isLent_; }

  private:
    std::size_t size() const;

    int width_;
    int height_;
    std::function<void()> released_;
    std::uint32_t *pixels_ = nullptr;
    ProtocolPointer<wl_buffer> buffer_;
    bool isLent_ = false;
};

} // namespace lumo::wayland
