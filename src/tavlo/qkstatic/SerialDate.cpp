#include "tavlo/qkstatic/SerialDate.h"
#include "tavlo/qkstatic/SerialDateInternal.h"

#include <array>
#include <cstring>

#include "zo/kel/NumericCast.h"
#include "zo/kel/TruncateToInt64.h"

namespace {

constexpr std::int64_t kMillisecondsPerHour = 3600000;
constexpr std::int64_t kMillisecondsPerMinute = 60000;
constexpr double kMillisecondsPerDay = 8.64e7;
constexpr double kDayFractionGuard = 1e-8;
constexpr unsigned int kDaysPerFourYears = 1461;

constexpr std::array<std::uint16_t, 12> kNonLeapMonthLengths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

struct YearAndDay {
    std::uint16_t year;
    unsigned int dayOfYear;
    std::uint16_t februaryDays;
};

// Each four-year block starts with its leap year; there is no century rule.
YearAndDay SplitFourYearBlock(unsigned int dayNumber) noexcept {
    const unsigned int block = dayNumber > 0 ? (dayNumber - 1) / kDaysPerFourYears : 0;
    const auto blockStart = static_cast<std::uint16_t>(1900 + 4 * block);
    const unsigned int day = dayNumber - kDaysPerFourYears * block;
    if (day <= 366) return {blockStart, day, 29};
    if (day > 1096) return {static_cast<std::uint16_t>(blockStart + 3), day - 1096, 28};
    if (day > 731) return {static_cast<std::uint16_t>(blockStart + 2), day - 731, 28};
    return {static_cast<std::uint16_t>(blockStart + 1), day - 366, 28};
}

}  // namespace

std::uint16_t internal::DaysInMonth(unsigned int month, unsigned int februaryDays) noexcept {
    if (month == 2) return static_cast<std::uint16_t>(februaryDays);
    return month >= 1 && month <= 12 ? kNonLeapMonthLengths[month - 1] : 0;
}

std::int64_t internal::MillisecondsOfDayFraction(double days) noexcept {
    const double whole = static_cast<double>(zo::kel::internal::TruncateToInt64(days));
    return zo::kel::internal::TruncateToInt64((days - whole + kDayFractionGuard) * kMillisecondsPerDay);
}

internal::ClockTime internal::SplitMilliseconds(std::int64_t milliseconds) {
    using zo::kel::NumericCast;
    const std::int64_t hour = milliseconds / kMillisecondsPerHour;
    const std::int64_t minute = milliseconds % kMillisecondsPerHour / kMillisecondsPerMinute;
    const std::int64_t rest = milliseconds - hour * kMillisecondsPerHour - minute * kMillisecondsPerMinute;
    return {NumericCast<std::uint16_t>(hour), NumericCast<std::uint16_t>(minute), NumericCast<std::uint16_t>(rest / 1000),
            NumericCast<std::uint16_t>(rest % 1000)};
}

BrokenDownDate internal::BreakDownDayNumber(double dayNumber) {
    const auto day = static_cast<std::uint16_t>(zo::kel::internal::TruncateToInt64(dayNumber));
    BrokenDownDate date{};
    date.dayOfWeek = static_cast<std::uint16_t>(day - 7 * ((day + 6) / 7) + 7);

    const YearAndDay split = SplitFourYearBlock(day);
    date.year = split.year;
    date.dayOfYear = static_cast<std::uint16_t>(split.dayOfYear);
    date.daysInYear = split.februaryDays == 29 ? 366 : 365;
    unsigned int remaining = split.dayOfYear;
    unsigned int month = 1;
    while (month < 12 && remaining > DaysInMonth(month, split.februaryDays)) remaining -= DaysInMonth(month++, split.februaryDays);
    date.month = static_cast<std::uint16_t>(month);
    date.day = static_cast<std::uint16_t>(remaining);
    date.daysInMonth = DaysInMonth(month, split.februaryDays);

    const ClockTime clock = SplitMilliseconds(MillisecondsOfDayFraction(dayNumber));
    date.hour = clock.hour;
    date.minute = clock.minute;
    date.second = clock.second;
    date.millisecond = clock.millisecond;
    return date;
}

void GetDate0(double* dayNumber, unsigned short* fields) {
    static_assert(sizeof(BrokenDownDate) == 11 * sizeof(unsigned short));
    const BrokenDownDate date = internal::BreakDownDayNumber(*dayNumber);
    std::memcpy(fields, &date, sizeof(date));
}

std::uint16_t DateDay0(unsigned int day, unsigned int month, unsigned int year) noexcept {
    if (month < 3) {
        month += 12;
        year -= 1;
    }
    // The large intermediate and the reduction modulo 65536 put day 1 on 1900-01-01.
    const unsigned int serial = (month * 306001u + 306001u) / 10000u + day + year / 4u + 365u * year + 26859u;
    return static_cast<std::uint16_t>(serial);
}
