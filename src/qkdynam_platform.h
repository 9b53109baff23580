// Export macro and the platform assumptions every unit of the library relies on.
// The wire forms assume a 64-bit `long` and 32-bit `wchar_t` code points; a
// build on anything else must stop here rather than produce foreign bytes.
#pragma once

#ifdef __cplusplus
#include <climits>
#else
#include <limits.h>
#endif

#if defined(QKDYNAM_BUILDING)
#define QKDYNAM_API __attribute__((visibility("default")))
#else
#define QKDYNAM_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define QKDYNAM_EXTERN_C extern "C"
static_assert(sizeof(long) == 8, "qkdynam needs a 64-bit long");
static_assert(sizeof(wchar_t) == 4, "qkdynam needs 32-bit wchar_t");
static_assert(CHAR_BIT == 8, "qkdynam needs 8-bit bytes");
#else
#define QKDYNAM_EXTERN_C
_Static_assert(sizeof(long) == 8, "qkdynam needs a 64-bit long");
#endif
