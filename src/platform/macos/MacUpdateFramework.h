#pragma once

#include "platform/MainLoop.h"
#include "platform/UpdateFramework.h"
#include "support/Lifetime.h"

#import <Foundation/Foundation.h>

namespace lumo::macos {

// The update framework inside the bundle, looked up by name while the program runs; what it finds
// it tells the user by itself. Without the framework every check says that there is no such
// service.
class MacUpdateFramework final : public UpdateFramework {
  public:
    // The main loop outlives the object.
    explicit MacUpdateFramework(MainLoop &mainLoop);

    // Whether the framework is there; loads it.
    static bool isAvailable();

    void startUpdater() override;
    void checkForUpdates(std::function<void(const UpdateResult &)> completion) override;

  private:
    MainLoop &mainLoop_;
    id updaterController_ = nil;
    Lifetime lifetime_;
};

} // namespace lumo::macos
