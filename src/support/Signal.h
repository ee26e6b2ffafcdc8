#pragma once

#include "support/Handle.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace lumo {

// A list of observers that are called in the order in which they subscribed.
//
// Promises: no call follows the release of a subscription, not even within a running emit(); an
// observer that subscribes during an emit() is first called by the next one; the signal, an
// observer and a subscription may each be destroyed first. One thread only.
template <class... Args>
class Signal {
  public:
    using Observer = std::function<void(const Args &...)>;

    Handle subscribe(Observer observer) {
        auto entry = std::make_shared<Entry>(Entry{std::move(observer), true});
        entries_->push_back(entry);
        return Handle([entries = std::weak_ptr(entries_), entry] {
            entry->live = false;
            if (auto list = entries.lock()) {
                std::erase(*list, entry);
            }
        });
    }

    void emit(const Args &...args) const {
        // A copy, because an observer may subscribe, unsubscribe or destroy the signal.
        const auto entries = *entries_;
        for (const auto &entry : entries) {
            if (entry->live) {
                entry->observer(args...);
            }
        }
    }

  private:
    struct Entry {
        Observer observer;
        bool live;
    };

    std::shared_ptr<std::vector<std::shared_ptr<Entry>>> entries_ =
        std::make_shared<std::vector<std::shared_ptr<Entry>>>();
};

} // namespace lumo
