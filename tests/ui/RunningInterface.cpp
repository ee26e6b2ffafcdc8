#include "RunningInterface.h"

#include <utility>

namespace lumo::test {

namespace {

RunningInterface *theInstance = nullptr; // NOLINT(*-non-const-global-variables)

} // namespace

RunningInterface::RunningInterface() {
    theInstance = this;
    interface.showMessage("Title", "Text");
}

RunningInterface::~RunningInterface() {
    theInstance = nullptr;
}

RunningInterface &RunningInterface::instance() {
    return *theInstance;
}

} // namespace lumo::test
