#pragma once

#include "platform/freedesktop/GlibPointers.h"

#include <functional>
#include <memory>
#include <utility>

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl*): as GLib declares them
using GAsyncResult = struct _GAsyncResult;
using GObject = struct _GObject;
// NOLINTEND(bugprone-reserved-identifier,cert-dcl*)

namespace lumo::freedesktop {

// How long a call on a message bus may take, in milliseconds as GIO counts.
inline constexpr int longestCall = 10000;

// The asynchronous GIO calls of the object that this is a member of. What is under way when the
// object goes is cancelled, and its result never reaches the object. Main thread only.
class AsyncCalls {
  public:
    // Called in a later turn of the loop with what the call's finish function takes.
    using Finish = std::function<void(GObject *source, GAsyncResult *result)>;

    AsyncCalls();
    ~AsyncCalls();
    AsyncCalls(const AsyncCalls &) = delete;
    AsyncCalls &operator=(const AsyncCalls &) = delete;

    // Begins a call by a function of GIO or one generated from a D-Bus interface, given all of its
    // arguments but the last three: the cancellable, the callback and the callback's data.
    template <class Function, class... Arguments>
    void start(Finish finish, Function function, Arguments... arguments) {
        auto *call = new Call{cancellable_, std::move(finish)};
        function(arguments..., cancellable_.get(), &AsyncCalls::finished, call);
    }

    // Cancels what is under way and drops its results.
    void cancel();

  private:
    using Cancellable = std::shared_ptr<GCancellable>;

    struct Call {
        Cancellable cancellable;
        Finish finish;
    };

    static void finished(GObject *source, GAsyncResult *result, void *data);

    Cancellable cancellable_;
};

} // namespace lumo::freedesktop
