// Comparison of character ranges and zero-terminated strings. The result is a
// signed magnitude: at the first differing character the difference of the
// two (upper-cased, for the case-insensitive forms, by the current locale's C
// library rules), otherwise the difference of the lengths, clamped to 32 bits.
// Callers test only its sign. A null string is empty. Nothing here throws
// except the UTF-8 forms, which throw InvalidSequence on malformed bytes.
#pragma once

#include "qkdynam_platform.h"

namespace zo::kel::osdep {

QKDYNAM_API int StringCaseCompare(const char* a, const char* b) noexcept;
QKDYNAM_API int StringCaseCompare(const char* aFirst, const char* aLast, const char* bFirst,
                                  const char* bLast) noexcept;
QKDYNAM_API int StringCaseCompare(const wchar_t* a, const wchar_t* b) noexcept;
QKDYNAM_API int StringCaseCompare(const wchar_t* aFirst, const wchar_t* aLast, const wchar_t* bFirst,
                                  const wchar_t* bLast) noexcept;

QKDYNAM_API int StringExactCompare(const char* a, const char* b) noexcept;
QKDYNAM_API int StringExactCompare(const char* aFirst, const char* aLast, const char* bFirst,
                                   const char* bLast) noexcept;
QKDYNAM_API int StringExactCompare(const wchar_t* a, const wchar_t* b) noexcept;
QKDYNAM_API int StringExactCompare(const wchar_t* aFirst, const wchar_t* aLast, const wchar_t* bFirst,
                                   const wchar_t* bLast) noexcept;

// UTF-8 byte strings, compared character by character as decoded code
// points; when one ends, the difference of the remaining character counts.
QKDYNAM_API int Utf8StringCaseInsensitiveCompare(const unsigned char* aFirst, const unsigned char* aLast,
                                                 const unsigned char* bFirst, const unsigned char* bLast);
QKDYNAM_API int Utf8StringExactCompare(const unsigned char* aFirst, const unsigned char* aLast,
                                       const unsigned char* bFirst, const unsigned char* bLast);

}  // namespace zo::kel::osdep
