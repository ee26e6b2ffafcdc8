#include "ProcessUse.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace lumo::desktop {

namespace fs = std::filesystem;

namespace {

fs::path folderOf(pid_t process) {
    return fs::path("/proc") / std::to_string(process);
}

double megabytesAfter(const fs::path &file, std::string_view key) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with(key)) {
            return std::stod(line.substr(key.size())) / 1024;
        }
    }
    return 0;
}

} // namespace

MemoryUse memoryUse(pid_t process) {
    const auto file = folderOf(process) / "smaps_rollup";
    return {megabytesAfter(file, "Rss:"), megabytesAfter(file, "Pss:")};
}

double cpuSeconds(pid_t process) {
    // The kernel's scheduler counts nanoseconds, where the usual counters count its clock ticks.
    double nanoseconds = 0;
    std::error_code ignored;
    for (const auto &thread : fs::directory_iterator(folderOf(process) / "task", ignored)) {
        std::ifstream stream(thread.path() / "schedstat");
        double ofThread = 0;
        stream >> ofThread;
        nanoseconds += ofThread;
    }
    return nanoseconds / 1e9;
}

bool hasMapped(pid_t process, std::string_view text) {
    std::ifstream stream(folderOf(process) / "maps");
    for (std::string line; std::getline(stream, line);) {
        if (line.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

} // namespace lumo::desktop
