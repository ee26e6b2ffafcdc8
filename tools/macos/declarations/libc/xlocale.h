// The functions of the Mac's C library that its C++ library builds its locales on.
#pragma once

#include <ctype.h>
#include <locale.h>
#include <stdarg.h>
#include <stddef.h>
#include <wchar.h>

#ifdef __cplusplus
extern "C" {
#endif
int snprintf_l(char *text, size_t size, locale_t locale, const char *format, ...);
int sscanf_l(const char *text, locale_t locale, const char *format, ...);
int asprintf_l(char **text, locale_t locale, const char *format, ...);
#ifdef __cplusplus
}
#endif

// Macros that take no null locale elsewhere.
#undef isdigit_l
#undef isxdigit_l
