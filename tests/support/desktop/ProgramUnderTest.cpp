#include "desktop/ProgramUnderTest.h"

#include <cstdlib>

namespace lumo::desktop {

std::string programUnderTest() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment
    const char *named = std::getenv("LUMO_PROGRAM");
    return named != nullptr ? named : LUMO_EXECUTABLE;
}

} // namespace lumo::desktop
