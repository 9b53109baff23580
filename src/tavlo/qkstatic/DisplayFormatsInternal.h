// The rows behind the display formats: each index's display name, its
// snprintf pattern and kind, and the fields that time and calendar kinds
// print, in the order they print them. Constant data for the formatter and
// the recognisers.
#pragma once

#include <array>
#include <cstdint>

#include "tavlo/qkstatic/DisplayFormats.h"

namespace internal {

enum class DisplayFormatKind : std::uint8_t {
    Number,
    Exponent,
    ZeroPaddedInteger,
    Hours,
    Minutes,
    Seconds,
    Elapsed,
    Clock,
    Calendar,
    Hexadecimal,
};

// The values a time or calendar pattern prints, in the order it prints them.
enum class DisplayField : std::uint8_t {
    None,
    Year,
    YearOfCentury,
    Month,
    Day,
    Hour,
    Minute,
    Second,
    Millisecond,
    Tenths,
    Hundredths,
    TotalHours,
    TotalMinutes,
};

inline constexpr unsigned int kDisplayFieldsMax = 7;

struct DisplayFormat {
    const char* name;
    const char* pattern;
    DisplayFormatKind kind;
    std::array<DisplayField, kDisplayFieldsMax> fields{};
};

using K = DisplayFormatKind;
using F = DisplayField;
// clang-format off
inline constexpr DisplayFormat kTable[kDisplayFormatCount] = {
    {"General", "%G", K::Number},
    {"0", "%0.0f", K::Number},
    {"0.0", "%0.1f", K::Number},
    {"0.00", "%0.2f", K::Number},
    {"0.000", "%0.3f", K::Number},
    {"0.0000", "%0.4f", K::Number},
    {"0.00000", "%0.5f", K::Number},
    {"0.000000", "%0.6f", K::Number},
    {"0.0000000", "%0.7f", K::Number},
    {"0.00000000", "%0.8f", K::Number},
    {"0E0", "%0.0E", K::Exponent},
    {"0.0E+0", "%0.1E", K::Exponent},
    {"0.00E+0", "%0.2E", K::Exponent},
    {"0.000E+0", "%0.3E", K::Exponent},
    {"0.0000E+0", "%0.4E", K::Exponent},
    {"0.00000E+0", "%0.5E", K::Exponent},
    {"0.000000E+0", "%0.6E", K::Exponent},
    {"0.0000000E+0", "%0.7E", K::Exponent},
    {"0.00000000E+0", "%0.8E", K::Exponent},
    {"00", "%02.0f", K::ZeroPaddedInteger},
    {"000", "%03.0f", K::ZeroPaddedInteger},
    {"0000", "%04.0f", K::ZeroPaddedInteger},
    {"00000", "%05.0f", K::ZeroPaddedInteger},
    {"000000", "%06.0f", K::ZeroPaddedInteger},
    {"0000000", "%07.0f", K::ZeroPaddedInteger},
    {"00000000", "%08.0f", K::ZeroPaddedInteger},
    {"H", "%0.0f", K::Hours},
    {"H.H", "%0.1f", K::Hours},
    {"H.HH", "%0.2f", K::Hours},
    {"M", "%0.0f", K::Minutes},
    {"M.M", "%0.1f", K::Minutes},
    {"M.MM", "%0.2f", K::Minutes},
    {"S", "%0.0f", K::Seconds},
    {"S.S", "%0.1f", K::Seconds},
    {"S.SS", "%0.2f", K::Seconds},
    {"HH:MM", "%2.2lu:%2.2u", K::Elapsed, {F::TotalHours, F::Minute}},
    {"HH:MM:SS", "%2.2lu:%2.2u:%2.2u", K::Elapsed, {F::TotalHours, F::Minute, F::Second}},
    {"HH:MM:SS.S", "%2.2lu:%2.2u:%2.2u.%1u", K::Elapsed, {F::TotalHours, F::Minute, F::Second, F::Tenths}},
    {"HH:MM:SS.SS", "%2.2lu:%2.2u:%2.2u.%2.2u", K::Elapsed, {F::TotalHours, F::Minute, F::Second, F::Hundredths}},
    {"HH:MM:SS.SSS", "%2.2lu:%2.2u:%2.2u.%3.3u", K::Elapsed, {F::TotalHours, F::Minute, F::Second, F::Millisecond}},
    {"MM:SS", "%2.2lu:%2.2u", K::Elapsed, {F::TotalMinutes, F::Second}},
    {"MM:SS.S", "%2.2lu:%2.2u.%1u", K::Elapsed, {F::TotalMinutes, F::Second, F::Tenths}},
    {"MM:SS.SS", "%2.2lu:%2.2u.%2.2u", K::Elapsed, {F::TotalMinutes, F::Second, F::Hundredths}},
    {"MM:SS.SSS", "%2.2lu:%2.2u.%3.3u", K::Elapsed, {F::TotalMinutes, F::Second, F::Millisecond}},
    {"hh:mm", "%2.2u:%2.2u", K::Clock, {F::Hour, F::Minute}},
    {"hh:mm:ss", "%2.2u:%2.2u:%2.2u", K::Clock, {F::Hour, F::Minute, F::Second}},
    {"mm/dd hh:mm", "%2.2u/%2.2u %2.2u:%2.2u", K::Calendar, {F::Month, F::Day, F::Hour, F::Minute}},
    {"mm/dd hh:mm:ss", "%2.2u/%2.2u %2.2u:%2.2u:%2.2u", K::Calendar, {F::Month, F::Day, F::Hour, F::Minute, F::Second}},
    {"mm/dd/yy", "%2.2u/%2.2u/%2.2u", K::Calendar, {F::Month, F::Day, F::YearOfCentury}},
    {"mm/dd/yy hh:mm", "%2.2u/%2.2u/%2.2u %2.2u:%2.2u", K::Calendar, {F::Month, F::Day, F::YearOfCentury, F::Hour, F::Minute}},
    {"mm/dd/yy hh:mm:ss", "%2.2u/%2.2u/%2.2u %2.2u:%2.2u:%2.2u", K::Calendar, {F::Month, F::Day, F::YearOfCentury, F::Hour, F::Minute, F::Second}},
    {"dd/mm hh:mm", "%2.2u/%2.2u %2.2u:%2.2u", K::Calendar, {F::Day, F::Month, F::Hour, F::Minute}},
    {"dd/mm hh:mm:ss", "%2.2u/%2.2u %2.2u:%2.2u:%2.2u", K::Calendar, {F::Day, F::Month, F::Hour, F::Minute, F::Second}},
    {"dd/mm/yy", "%2.2u/%2.2u/%2.2u", K::Calendar, {F::Day, F::Month, F::YearOfCentury}},
    {"dd/mm/yy hh:mm", "%2.2u/%2.2u/%2.2u %2.2u:%2.2u", K::Calendar, {F::Day, F::Month, F::YearOfCentury, F::Hour, F::Minute}},
    {"dd/mm/yy hh:mm:ss", "%2.2u/%2.2u/%2.2u %2.2u:%2.2u:%2.2u", K::Calendar, {F::Day, F::Month, F::YearOfCentury, F::Hour, F::Minute, F::Second}},
    {"0x0", "0x%01X", K::Hexadecimal},
    {"0x00", "0x%02X", K::Hexadecimal},
    {"0x000", "0x%03X", K::Hexadecimal},
    {"0x0000", "0x%04X", K::Hexadecimal},
    {"0x00000", "0x%05X", K::Hexadecimal},
    {"0x000000", "0x%06X", K::Hexadecimal},
    {"0x0000000", "0x%07X", K::Hexadecimal},
    {"0x00000000", "0x%08X", K::Hexadecimal},
    {"mm/dd/yyyy", "%2.2u/%2.2u/%4.4u", K::Calendar, {F::Month, F::Day, F::Year}},
    {"mm/dd/yyyy hh:mm", "%2.2u/%2.2u/%4.4u %2.2u:%2.2u", K::Calendar, {F::Month, F::Day, F::Year, F::Hour, F::Minute}},
    {"mm/dd/yyyy hh:mm:ss", "%2.2u/%2.2u/%4.4u %2.2u:%2.2u:%2.2u", K::Calendar, {F::Month, F::Day, F::Year, F::Hour, F::Minute, F::Second}},
    {"dd/mm/yyyy", "%2.2u/%2.2u/%4.4u", K::Calendar, {F::Day, F::Month, F::Year}},
    {"dd/mm/yyyy hh:mm", "%2.2u/%2.2u/%4.4u %2.2u:%2.2u", K::Calendar, {F::Day, F::Month, F::Year, F::Hour, F::Minute}},
    {"dd/mm/yyyy hh:mm:ss", "%2.2u/%2.2u/%4.4u %2.2u:%2.2u:%2.2u", K::Calendar, {F::Day, F::Month, F::Year, F::Hour, F::Minute, F::Second}},
    {"yyyy-mm-dd", "%4.4u-%2.2u-%2.2u", K::Calendar, {F::Year, F::Month, F::Day}},
    {"yyyy-mm-dd hh:mm", "%4.4u-%2.2u-%2.2u %2.2u:%2.2u", K::Calendar, {F::Year, F::Month, F::Day, F::Hour, F::Minute}},
    {"yyyy-mm-dd hh:mm:ss", "%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u", K::Calendar, {F::Year, F::Month, F::Day, F::Hour, F::Minute, F::Second}},
    {"hh:mm:ss.s", "%2.2u:%2.2u:%2.2u.%1u", K::Clock, {F::Hour, F::Minute, F::Second, F::Tenths}},
    {"yyyy-mm-dd hh:mm:ss.sss", "%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u.%3.3u", K::Calendar, {F::Year, F::Month, F::Day, F::Hour, F::Minute, F::Second, F::Millisecond}},
    {"mm/dd/yyyy hh:mm:ss.sss", "%2.2u/%2.2u/%4.4u %2.2u:%2.2u:%2.2u.%3.3u", K::Calendar, {F::Month, F::Day, F::Year, F::Hour, F::Minute, F::Second, F::Millisecond}},
    {"dd/mm/yyyy hh:mm:ss.sss", "%2.2u/%2.2u/%4.4u %2.2u:%2.2u:%2.2u.%3.3u", K::Calendar, {F::Day, F::Month, F::Year, F::Hour, F::Minute, F::Second, F::Millisecond}},
};
// clang-format on

// The row of `index`; 77 and above give row 0.
constexpr const DisplayFormat& DisplayFormatAt(unsigned int index) noexcept {
    return kTable[index < kDisplayFormatCount ? index : 0];
}

}  // namespace internal
