#pragma once

#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>
#include <utility>

namespace lumo {

// The handle of one observer of a published value.
using Subscription = Handle;

// A value that announces every assignment, equal ones included.
//
// A subscriber is called once at once with the current value, and then with the new value of each
// assignment, before that value is stored: use the argument, value() still returns the old one. An
// assignment made from within an announcement is overwritten by the one being announced. One thread
// only.
template <class T>
class Published {
  public:
    explicit Published(T initial)
        : value_(std::move(initial)) {}

    Published(const Published &) = delete;
    Published &operator=(const Published &) = delete;

    const T &value() const { return value_; }

    void set(T next) {
        changes_.emit(next);
        value_ = std::move(next);
    }

    Subscription subscribe(std::function<void(const T &)> observer) {
        observer(value_);
        return subscribeToChanges(std::move(observer));
    }

    // As subscribe(), without the first call.
    Subscription subscribeToChanges(std::function<void(const T &)> observer) {
        return changes_.subscribe(std::move(observer));
    }

  private:
    T value_;
    Signal<T> changes_;
};

} // namespace lumo
