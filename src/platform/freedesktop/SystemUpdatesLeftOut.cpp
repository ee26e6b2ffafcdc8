#include "platform/MainLoop.h"
#include "platform/freedesktop/SystemUpdates.h"
#include "support/Lifetime.h"

#include <functional>

namespace lumo::freedesktop {

namespace {

class NoUpdates final : public UpdateFramework {
  public:
    explicit NoUpdates(MainLoop &mainLoop)
        : mainLoop_(mainLoop) {}

    void startUpdater() override {}

    void checkForUpdates(std::function<void(const UpdateResult &)> completion) override {
        mainLoop_.post(
            lifetime_.guard([completion = std::move(completion)] { completion(UpdateResult{}); }));
    }

  private:
    MainLoop &mainLoop_;
    Lifetime lifetime_;
};

} // namespace

const bool hasSystemUpdates = false;

std::unique_ptr<UpdateFramework> makeSystemUpdates(MainLoop &mainLoop) {
    return std::make_unique<NoUpdates>(mainLoop);
}

} // namespace lumo::freedesktop
