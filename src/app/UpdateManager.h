#pragma once

#include "platform/Platform.h"
#include "platform/UpdateFramework.h"
#include "support/Lifetime.h"

#include <functional>

namespace lumo {

// Owns the program's part in keeping itself up to date: starts the updater, which looks for updates
// by itself where it can, and asks it when the user does. Main thread only.
class UpdateManager {
  public:
    explicit UpdateManager(const Platform &platform);

    void checkForUpdates();

    // Tells the user what came of a check, where the updater does not by itself.
    std::function<void(const UpdateResult &)> onResult;

  private:
    UpdateFramework &updaterController_;
    Lifetime lifetime_;
};

} // namespace lumo
