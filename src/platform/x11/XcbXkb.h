#pragma once

// The keyboard extension of libxcb, whose header has a field that is named like a C++ keyword.
#define explicit explicit_ // NOLINT(clang-diagnostic-keyword-macro)
#include <xcb/xkb.h>
#undef explicit
