#include "app/UpdateManager.h"

namespace lumo {

UpdateManager::UpdateManager(const Platform &platform)
    : updaterController_(platform.updateFramework) {
    updaterController_.startUpdater();
}

void UpdateManager::checkForUpdates() {
    updaterController_.checkForUpdates(lifetime_.guard([this](const UpdateResult &result) {
        if (onResult) {
            onResult(result);
        }
    }));
}

} // namespace lumo
