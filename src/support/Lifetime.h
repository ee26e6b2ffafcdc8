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

  private:
    struct Token {};
    std::shared_ptr<Token> alive_ = std::make_shared<Token>();
};

} // namespace lumo
