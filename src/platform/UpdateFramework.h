#pragma once

#include <functional>
#include <optional>
#include <string>

namespace lumo {

// What came of a check for updates.
struct UpdateResult {
    enum class Kind { upToDate, newerVersion, notInstalledByPackage, serviceUnavailable };

    Kind kind = Kind::serviceUnavailable;
    std::string version; // of Kind::newerVersion

    bool operator==(const UpdateResult &) const = default;
};

// The system's way to keep this program up to date. Main thread only; never waits.
class UpdateFramework {
  public:
    virtual ~UpdateFramework() = default;

    // Called once: a framework that checks by itself begins to.
    virtual void startUpdater() = 0;

    // Checks now because the user asked. The completion is called in a later turn with the result;
    // never by a framework that tells the user by itself, and not at all once this object is gone.
    virtual void checkForUpdates(std::function<void(const UpdateResult &)> completion) = 0;
};

} // namespace lumo
