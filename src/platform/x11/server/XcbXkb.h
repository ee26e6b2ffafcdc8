#pragma once
#pragma GCC system_header // as what it wraps is one

// The keyboard extension of libxcb, whose header has a field that is named like a C++ keyword.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
