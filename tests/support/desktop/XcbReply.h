#pragma once

#include <cstdlib>
#include <memory>

namespace lumo::desktop {

struct FreeMemory {
    void operator()(void *memory) const noexcept { std::free(memory); }
};

// A reply or an event of the X server; null when there is none.
template <class T>
using XcbReply = std::unique_ptr<T, FreeMemory>;

} // namespace lumo::desktop
