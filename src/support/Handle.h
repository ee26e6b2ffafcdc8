#pragma once

#include <functional>

namespace lumo {

// Owns something that must be released exactly once: a subscription, a timer, an event monitor, a
// grab. Move-only. Destroying it, reset() and assigning over it release what it holds; an empty
// handle releases nothing. Used on the thread that obtained it.
class [[nodiscard]] Handle {
  public:
    Handle() = default;
    explicit Handle(std::function<void()> release);
    ~Handle();

    Handle(Handle &&other) noexcept;
    Handle &operator=(Handle &&other) noexcept;
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    void reset();

    // True while something is held.
    explicit operator bool() const { return static_cast<bool>(release_); }

  private:
    std::function<void()> release_;
};

} // namespace lumo
