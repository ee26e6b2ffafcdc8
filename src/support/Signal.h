#pragma once

#include "support/Handle.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace lumo {

// A list of observers that are called in the order in which they subscribed.
//
// Promises: no call follows the release of a subscription, not even within a running emit(); an
// observer that subscribes during an emit() is first called by the next one; the signal, an
// observer and a subscription may each be destroyed first; emit() allocates nothing. One thread
// only.
template <class... Args>
class Signal {
  public:
    using Observer = std::function<void(const Args &...)>;

    Handle subscribe(Observer observer) {
        auto entry = std::make_shared<Entry>(Entry{std::move(observer), true});
        list_->entries.push_back(entry);
        return Handle([list = std::weak_ptr(list_), entry] {
            entry->live = false;
            if (auto still = list.lock(); still && still->running == 0) {
                std::erase(still->entries, entry);
            }
        });
    }

    // False when there is no subscriber, which may save working out what to announce.
    bool isObserved() const {
        return std::ranges::any_of(list_->entries, [](const auto &entry) { return entry->live; });
    }

    void emit(const Args &...args) const {
        // Held, because an observer may destroy the signal.
        const Run run(list_);
        const auto count = run.list->entries.size();
        for (std::size_t index = 0; index < count; ++index) {
            const auto &entry = *run.list->entries[index];
            if (entry.live) {
                entry.observer(args...);
            }
        }
    }

  private:
    struct Entry {
        Observer observer;
        bool live;
    };

    struct List {
        std::vector<std::shared_ptr<Entry>> entries;
        int running = 0; // emits; while there are any, released entries stay where they are
    };

    // One emit(), at the end of which the released entries go.
    struct Run {
        explicit Run(std::shared_ptr<List> running)
            : list(std::move(running)) {
            ++list->running;
        }
        ~Run() {
            if (--list->running == 0) {
                std::erase_if(list->entries, [](const auto &entry) { return !entry->live; });
            }
        }
        Run(const Run &) = delete;
        Run &operator=(const Run &) = delete;

        std::shared_ptr<List> list;
    };

    std::shared_ptr<List> list_ = std::make_shared<List>();
};

} // namespace lumo
