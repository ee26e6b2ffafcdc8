#pragma once

namespace lumo::freedesktop {

// Gives back to the system what is in memory without being used: freed blocks of the heap, and the
// code of the program and its libraries, of which what still runs comes back by itself from the
// system's file cache. Takes well below a millisecond; meant for when a large part of the program
// has done its work, as after the last window was closed.
void trimMemory();

} // namespace lumo::freedesktop
