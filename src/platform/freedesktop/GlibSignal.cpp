#include "platform/freedesktop/GlibSignal.h"

#include <glib-object.h>

namespace lumo::freedesktop {

Handle connectToSignal(void *object, const char *signal, void (*function)(), void *data) {
    const auto connected = g_signal_connect(object, signal, function, data);
    return Handle([held = g_object_ref(object), connected] {
        g_signal_handler_disconnect(held, connected);
        g_object_unref(held);
    });
}

} // namespace lumo::freedesktop
