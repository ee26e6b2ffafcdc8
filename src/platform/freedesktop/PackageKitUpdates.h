#pragma once

#include "platform/MainLoop.h"
#include "platform/UpdateFramework.h"

#include <functional>
#include <memory>
#include <string>

namespace lumo::freedesktop {

// Asks the system's package service, PackageKit on the system bus, about the package that this
// program was installed by. Only asks: nothing is downloaded or installed. Lumo never asks by
// itself, since the desktop does that for all packages.
class PackageKitUpdates final : public UpdateFramework {
  public:
    // For the package that holds the file. The main loop outlives the object.
    PackageKitUpdates(MainLoop &mainLoop, std::string file);
    ~PackageKitUpdates() override;
    PackageKitUpdates(const PackageKitUpdates &) = delete;
    PackageKitUpdates &operator=(const PackageKitUpdates &) = delete;

    void startUpdater() override {}
    void checkForUpdates(std::function<void(const UpdateResult &)> completion) override;

  private:
    class Check;

    MainLoop &mainLoop_;
    std::string file_;
    std::unique_ptr<Check> check_; // the last one
};

} // namespace lumo::freedesktop
