#include "platform/freedesktop/AsyncCalls.h"

#include <gio/gio.h>

#include <utility>

namespace lumo::freedesktop {

AsyncCalls::AsyncCalls()
    : cancellable_(g_cancellable_new(), GlibDeleter()) {
}

AsyncCalls::~AsyncCalls() {
    g_cancellable_cancel(cancellable_.get());
}

void AsyncCalls::cancel() {
    const auto cancelled = std::exchange(cancellable_, {g_cancellable_new(), GlibDeleter()});
    g_cancellable_cancel(cancelled.get());
}

void AsyncCalls::finished(GObject *source, GAsyncResult *result, void *data) {
    const std::unique_ptr<Call> call(static_cast<Call *>(data));
    if (g_cancellable_is_cancelled(call->cancellable.get()) == FALSE) {
        call->finish(source, result);
    }
}

} // namespace lumo::freedesktop
