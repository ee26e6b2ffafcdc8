#pragma once

#include "platform/WindowServer.h"

#include <memory>

namespace lumo::macos {

// The window server's list, read afresh at every call.
class MacWindowServer final : public WindowServer {
  public:
    std::shared_ptr<const WindowRecords> onScreenWindows() const override;

    // The list as it was last read; null before, and when that failed.
    std::shared_ptr<const WindowRecords> lastRead() const { return last_; }

  private:
    mutable std::shared_ptr<const WindowRecords> last_;
};

} // namespace lumo::macos
