#include "platform/freedesktop/PackageKitUpdates.h"
#include "platform/freedesktop/SystemUpdates.h"

#include <filesystem>

namespace lumo::freedesktop {

const bool hasSystemUpdates = true;

std::unique_ptr<UpdateFramework> makeSystemUpdates(MainLoop &mainLoop) {
    std::error_code error;
    return std::make_unique<PackageKitUpdates>(
        mainLoop, std::filesystem::read_symlink("/proc/self/exe", error).string());
}

} // namespace lumo::freedesktop
