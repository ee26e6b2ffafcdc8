#pragma once

#include <sys/types.h>

#include <string_view>

namespace lumo::desktop {

// What a program used so far, as the kernel counts it.
struct MemoryUse {
    double residentMegabytes = 0;
    double proportionalMegabytes = 0; // shared pages divided among those who share them
};

MemoryUse memoryUse(pid_t process);

// Processor time of its living threads.
double cpuSeconds(pid_t process);

// True when a file whose path contains the text is mapped into the program.
bool hasMapped(pid_t process, std::string_view text);

} // namespace lumo::desktop
