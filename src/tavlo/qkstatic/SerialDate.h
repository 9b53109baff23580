// Serial day numbers: day 1 is 1900-01-01, 1900 counts as a leap year (day 60
// is 1900-02-29) and from day 61 on the numbers equal days since 1899-12-30.
// Day numbers are 16-bit: day 65535 is 2079-06-06 and larger numbers wrap.
// Thread-safe; a negative time of day throws zo::kel::exception::OutOfRange.
#pragma once

#include <cstdint>

#include "qkdynam_platform.h"

// The eleven fields that GetDate0 writes, in this order.
struct BrokenDownDate {
    std::uint16_t year;
    std::uint16_t dayOfYear;    // 0 for day number 0
    std::uint16_t month;        // 1 to 12
    std::uint16_t day;          // 0 for day number 0
    std::uint16_t dayOfWeek;    // 1 = Sunday ... 7 = Saturday
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t millisecond;
    std::uint16_t daysInMonth;
    std::uint16_t daysInYear;
};

// Writes the eleven BrokenDownDate fields of *dayNumber to fields[0..10].
QKDYNAM_API void GetDate0(double* dayNumber, unsigned short* fields);
// The day number of a date; the inverse of the date part of GetDate0.
QKDYNAM_API std::uint16_t DateDay0(unsigned int day, unsigned int month, unsigned int year) noexcept;
