// Conversion between wide text ("UTF-32LE") and narrow text in a named
// character set, through iconv. Each direction has three forms: allocate and
// return, required length, convert into a caller buffer. A conversion iconv
// cannot open or perform throws UnableToConvert unless the direction's throw
// switch is off; then each unconvertible unit becomes '?'. Descriptors are
// cached per thread, so every function is safe to call from any thread.
#pragma once

#include "qkdynam_platform.h"
#include "zo/kel/StringBase.h"

namespace zo::kel::osdep {

// Narrow to wide. Lengths are in wide characters.
QKDYNAM_API WideString AnsiToWide(const char* text, const char* end, const char* charsetName);
QKDYNAM_API WideString AnsiToWide(const char* text, unsigned int length, const char* charsetName);
QKDYNAM_API unsigned int GetAnsiToWideRequiredBufferLength(const char* first, const char* last,
                                                           const char* charsetName);
// Writes into [outFirst, outLast) and returns the end of what was written; a
// too small buffer throws BufferOverflow, a null or inverted one InvalidArgument.
QKDYNAM_API wchar_t* AnsiToWideNoAlloc(const char* first, const char* last, wchar_t* outFirst, wchar_t* outLast,
                                       const char* charsetName);

// Wide to narrow. Lengths are in bytes.
QKDYNAM_API NarrowString WideToAnsi(const wchar_t* first, const wchar_t* last, const char* charsetName);
QKDYNAM_API NarrowString WideToAnsi(const wchar_t* text, const char* charsetName);
QKDYNAM_API unsigned int GetWideToAnsiRequiredBufferLength(const wchar_t* first, const wchar_t* last,
                                                           const char* charsetName);
QKDYNAM_API char* WideToAnsiNoAlloc(const wchar_t* first, const wchar_t* last, char* outFirst, char* outLast,
                                    const char* charsetName);

// Process-wide throw switches (on at load); each returns its previous setting.
QKDYNAM_API bool MakeAnsiToWideThrow(bool throws) noexcept;
QKDYNAM_API bool MakeWideToAnsiThrow(bool throws) noexcept;

// The charset StringBase uses for its narrow side.
inline constexpr const char* kNarrowStringCharset = "US-ASCII";
// The name of wide text for iconv.
inline constexpr const char* kWideCharset = "UTF-32LE";

}  // namespace zo::kel::osdep
