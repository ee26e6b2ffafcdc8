#pragma once

namespace lumo::macos {

// Stops the program, naming the method, when one of the backend's that is meant to override or
// answer one of the platform's does not. For debug builds; costs a few look-ups.
void checkOverrides();

} // namespace lumo::macos
