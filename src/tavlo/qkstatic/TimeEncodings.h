// The scalar time encodings of the value layer and the conversions between
// them: Time64 (unsigned ns since 1899-12-30), QKTIME and FILETIME (100 ns
// ticks since 1601-01-01) and days (double, since 1899-12-30). Stateless; none
// of them fails: out-of-range values wrap modulo 2^64 or truncate as stated.
#pragma once

#include <cstdint>

#include "qkdynam_platform.h"

typedef long QKTIME;

// The platform's 64-bit tick count, as two 32-bit halves, low half first.
struct _FILETIME {
    std::uint32_t dwLowDateTime;
    std::uint32_t dwHighDateTime;
};
typedef _FILETIME FILETIME;

// Nanoseconds in one day: the scale between Time64 and days.
inline constexpr double kNanosecondsPerDay = 8.64e13;
inline constexpr std::uint64_t kNanosecondsPerDayInteger = 86400000000000u;
// 1601-01-01 to 1899-12-30 (109,205 days) in 100 ns ticks and in ns.
inline constexpr std::uint64_t kQKTIMEOffsetTicks = 94353120000000000u;
inline constexpr std::uint64_t kQKTIMEOffsetNanoseconds = 9435312000000000000u;

QKDYNAM_API double NanosecsToDays(unsigned long nanoseconds) noexcept;
// days × 8.64e13 truncated toward zero; products of 2^63 and more convert as
// (product − 2^63) with the top bit set, negative ones as their two's complement.
QKDYNAM_API std::uint64_t DaysToNanosecs(double days) noexcept;

QKDYNAM_API long Time64ToQKTIME(unsigned long nanoseconds) noexcept;
// Ticks before 1899-12-30 wrap modulo 2^64.
QKDYNAM_API std::uint64_t QKTIMEToTime64(long ticks) noexcept;
QKDYNAM_API _FILETIME Time64ToFILETIME(unsigned long nanoseconds) noexcept;
QKDYNAM_API std::uint64_t FILETIMEToTime64(_FILETIME ticks) noexcept;

QKDYNAM_API long DaysToQKTIME(double days) noexcept;
QKDYNAM_API double QKTIMEToDays(long ticks) noexcept;
