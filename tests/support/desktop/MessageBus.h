#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/TemporaryDirectory.h"

#include <memory>
#include <string>

namespace lumo::desktop {

// A message bus that no other program knows of, for all users. Throws when it cannot be started;
// ends with the object.
class MessageBus {
  public:
    enum class Services { none, ofTheSystem }; // which it starts when they are called

    explicit MessageBus(Environment environment = {{"PATH", "/usr/local/bin:/usr/bin:/bin"}},
                        Services services = Services::none);

    const std::string &address() const { return address_; }

    // Ends it, and starts another one at the same address, which accepts connections then.
    void stop() { daemon_.reset(); }
    void start();

  private:
    TemporaryDirectory directory_;
    Environment environment_;
    std::string address_;
    std::unique_ptr<ChildProcess> daemon_;
};

} // namespace lumo::desktop
