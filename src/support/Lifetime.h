#pragma once

#include <memory>
#include <utility>

namespace lumo {

// Ties deferred work to its owner: a member of the owner, whose guarded functions do nothing once
// the owner is gone. Declare it last, so that it is destroyed first. Guard, call and destroy on one
// thread.
class Lifetime {
  public:
    Lifetime() = default;
    Lifetime(const Lifetime &) = delete;
    Lifetime &operator=(const Lifetime &) = delete;

    // The function as it is, but dropped silently after this lifetime has ended.
    template <class Function>
    auto guard(Function function) const {
        return [alive = std::weak_ptr(alive_),
                function = std::move(function)](auto &&...args) mutable {
            if (!alive.expired()) {
                function(std::forward<decltype(args)>(args)...);
            }
        };
    }

    // Tells, also after its owner has gone, whether it is still there: for a member function that
    // calls out and can't know whether it may touch its object afterwards.
    class Watch {
      public:
        explicit operator bool() const { return !alive_.expired(); }

      private:
        friend class Lifetime;
        explicit Watch(std::weak_ptr<const void> alive)
            : alive_(std::move(alive)) {}

        std::weak_ptr<const void> alive_;
    };

    Watch watch() const { return Watch(alive_); }

  private:
    struct Token {};
    std::shared_ptr<Token> alive_ = std::make_shared<Token>();
};

} // namespace lumo
