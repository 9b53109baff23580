// Text to value: numbers (decimal, exponent, hexadecimal), elapsed times in
// days, calendar dates with an optional clock time as serial day numbers,
// Time64 nanoseconds and logicals. Each recogniser returns a success flag and
// writes its result only on success; the one exception is
// zo::kel::exception::OutOfRange for a digit run beyond 16 bits (a date or
// time field, or an exponent). Wide forms convert to "US-ASCII" first and
// throw what that conversion throws. Thread-safe.
#pragma once

#include "qkdynam_platform.h"

// Non-zero when all of `text` is a number, e.g. " 12", "-1.5E-3", "0x1F".
QKDYNAM_API int AsciiToNumber(const char* text, double* out);
// Non-zero when `text` is an elapsed time (s, m:s, h:m:s or d:h:m:s with an
// optional fraction of the last group); `out` in days. Blank text is 0.
QKDYNAM_API int AsciiToDays(const char* text, double* out);
// Non-zero when `text` is a date, optionally followed by one space and a
// clock time; the field order follows display format `format`.
QKDYNAM_API int AsciiToDateTime(const char* text, double* out, int format);

// False for empty text; else the first of AsciiToNumber, AsciiToDays and
// AsciiToDateTime(text, out, format) that accepts it.
QKDYNAM_API bool TextToNumber0(const char* text, double* out, int format);

// AsciiToNumber accepted the text.
QKDYNAM_API bool IsNumericText(const char* text, double& out);
// AsciiToDays, else AsciiToDateTime(text, out, 0).
QKDYNAM_API bool IsTimeText(const char* text, double& out);
// As above, as Time64 nanoseconds with the sub-second part dropped (whole
// seconds times 10^9, wrapping modulo 2^64).
QKDYNAM_API bool IsTimeText(const char* text, long& out);

// The wide forms behave as the narrow ones on the text converted to narrow.
QKDYNAM_API bool IsNumericText(const wchar_t* text, double& out);
QKDYNAM_API bool IsTimeText(const wchar_t* text, double& out);
QKDYNAM_API bool IsTimeText(const wchar_t* text, long& out);

// True when the text is one of the boolean words, compared ignoring case:
// "on", "yes", "y", "true", "t", "it just works", "unbelievable!" give true;
// "off", "no", "n", "false", "nil", "yeah, right" give false.
QKDYNAM_API bool IsLogicalText(const char* text, bool& out);
QKDYNAM_API bool IsLogicalText(const wchar_t* text, bool& out);
