// What the formatter and the date recogniser share with GetDate0: the clock
// fields of a day fraction and the calendar break-down of a day number.
#pragma once

#include <cstdint>

#include "tavlo/qkstatic/SerialDate.h"

namespace internal {

// A time of day or an elapsed remainder split into clock fields.
struct ClockTime {
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;
    std::uint16_t millisecond;
};

// Milliseconds of the fraction of `days`, with a 1e-8 day guard against a
// fraction just below a millisecond boundary; truncated toward zero.
std::int64_t MillisecondsOfDayFraction(double days) noexcept;
// Throws OutOfRange when `milliseconds` is negative or its hours exceed 16 bits.
ClockTime SplitMilliseconds(std::int64_t milliseconds);

// GetDate0's fields as a record.
BrokenDownDate BreakDownDayNumber(double dayNumber);
// Days in `month` (1 to 12) of a year whose February has `februaryDays`.
std::uint16_t DaysInMonth(unsigned int month, unsigned int februaryDays) noexcept;

}  // namespace internal
