#pragma once

#include <string>

namespace lumo::desktop {

// The file of the real program: the one that this build made, or that LUMO_PROGRAM names, such as
// one that another build made with sanitizers.
std::string programUnderTest();

} // namespace lumo::desktop
