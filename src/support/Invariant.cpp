#include "support/Invariant.h"

#include <cstdlib>
#include <iostream>

namespace lumo {

void fatal(std::string_view message) {
    std::cerr << "[Lumo] fatal: " << message << std::endl;
    std::abort();
}

} // namespace lumo
