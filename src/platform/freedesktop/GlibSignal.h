#pragma once

#include "support/Handle.h"

namespace lumo::freedesktop {

// Has a GObject call the function, of the type that the signal prescribes, with the data whenever
// it emits the signal, until the handle is released. The handle keeps the object.
Handle connectToSignal(void *object, const char *signal, void (*function)(), void *data);

} // namespace lumo::freedesktop
