#pragma once

#include "support/Handle.h"
#include "support/Signal.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace lumo {

// Announcements inside the program by name, between parts that need not know each other. One thread
// only.
class NotificationCenter {
  public:
    // Calls the observer each time the notification is posted, until the handle is released.
    Handle addObserver(std::string_view name, std::function<void()> observer) {
        return posted_.subscribe(
            [wanted = std::string(name), observer = std::move(observer)](std::string_view posted) {
                if (posted == wanted) {
                    observer();
                }
            });
    }

    // Calls all observers of the notification before it returns.
    void post(std::string_view name) const { posted_.emit(name); }

  private:
    Signal<std::string_view> posted_;
};

} // namespace lumo
