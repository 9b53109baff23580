// Value to text under a display format, into caller-owned narrow buffers of
// an explicit size; results are lengths as snprintf reports them (text that
// does not fit is cut, its full length returned). An overflow writes up to
// fifteen asterisks and then throws zo::kel::exception::OutOfRange for
// buffers of two bytes or more; negative times throw OutOfRange. Thread-safe.
#pragma once

#include "qkdynam_platform.h"
#include "zo/kel/StringBase.h"

// The text shown when a value cannot be formatted.
inline constexpr char szOverflow[] = "***************";

// Writes `value` under display format `format` (77 and above: "General").
// Returns 0 without writing when `buf` is null or `size` is 0.
QKDYNAM_API int NumberToText0(unsigned int format, char* buf, unsigned long size, double value);
// NumberToText0 into a buffer of its own (32 bytes), widened into `out`;
// returns the NumberToText0 result. A text longer than 31 characters is cut
// like any other.
QKDYNAM_API int NumberToText(double value, int format, zo::kel::WideString& out);
// Fills `buf` with min(size, 16) − 1 asterisks and a zero, then reports
// 1 − min(size, 16) through a checked narrowing: 1 or 0 for sizes 0 and 1,
// OutOfRange for anything larger.
QKDYNAM_API int SetOverflow(char* buf, unsigned long size);

// A Time64 value (ns since 1899-12-30) as NumberToText0 of ns / 8.64e13 days.
QKDYNAM_API int TimeToText(long ns, int format, char* buf, unsigned int size);
// Whole days only (the time of day is dropped first), widened byte by byte
// (sign-extended) into at most min(size − 1, 31) characters and a zero.
QKDYNAM_API int TimeToText(long ns, int format, wchar_t* buf, unsigned int size);
