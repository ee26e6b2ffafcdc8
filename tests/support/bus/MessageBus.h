#pragma once

#include "desktop/ChildProcess.h"
#include "desktop/TemporaryDirectory.h"

#include <memory>
#include <string>

namespace lumo::test {

// A message bus that no other program knows of and that starts no services. Throws when it cannot
// be started; ends with the object.
class MessageBus {
  public:
    MessageBus();

    const std::string &address() const { return address_; }

    // Ends it, and starts another one at the same address.
    void stop() { daemon_.reset(); }
    void start();

  private:
    desktop::TemporaryDirectory directory_;
    std::string address_;
    std::unique_ptr<desktop::ChildProcess> daemon_;
};

} // namespace lumo::test
