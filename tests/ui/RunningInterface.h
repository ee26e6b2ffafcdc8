#pragma once

#include "InterfaceStage.h"
#include "ui/QtInterface.h"

namespace lumo::test {

// The toolkit without a display, as the program starts it. One for the whole test program: the
// toolkit can't be started twice.
class RunningInterface {
  public:
    RunningInterface();
    ~RunningInterface();
    RunningInterface(const RunningInterface &) = delete;
    RunningInterface &operator=(const RunningInterface &) = delete;

    static RunningInterface &instance();

    InterfaceStage stage;
    QtInterface interface {
        stage.desktop.platform(), { .windowSystem = "offscreen" }
    };
};

} // namespace lumo::test
