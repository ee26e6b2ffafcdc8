#pragma once

namespace lumo::x11 {

// Whether a window manager runs, and whether it is the compositing manager as well.
enum class Management { none, plain, compositing };

} // namespace lumo::x11
