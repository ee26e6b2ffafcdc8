#include "platform/x11/PackageKitUpdates.h"
#include "platform/x11/SystemUpdates.h"

#include <filesystem>

namespace lumo::x11 {

const bool hasSystemUpdates = true;

std::unique_ptr<UpdateFramework> makeSystemUpdates(MainLoop &mainLoop) {
    std::error_code error;
    return std::make_unique<PackageKitUpdates>(
        mainLoop, std::filesystem::read_symlink("/proc/self/exe", error).string());
}

} // namespace lumo::x11
