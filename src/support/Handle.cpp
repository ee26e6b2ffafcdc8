#include "support/Handle.h"

#include <utility>

namespace lumo {

Handle::Handle(std::function<void()> release)
    : release_(std::move(release)) {
}

Handle::~Handle() {
    reset();
}

Handle::Handle(Handle &&other) noexcept
    : release_(std::exchange(other.release_, nullptr)) {
}

Handle &Handle::operator=(Handle &&other) noexcept {
    if (this != &other) {
        reset();
        release_ = std::exchange(other.release_, nullptr);
    }
    return *this;
}

void Handle::reset() {
    // Emptied first, so that a release that comes back here finds nothing left to do.
    if (auto release = std::exchange(release_, nullptr)) {
        release();
    }
}

} // namespace lumo
