#pragma once

#include "support/Log.h"

namespace lumo::macos {

// A log that writes each line at error level to the system's log, under the bundle's identifier
// ("Lumo" without one) as subsystem and this category.
Log unifiedLog(const char *category);

} // namespace lumo::macos
