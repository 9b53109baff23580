#include "tavlo/qkstatic/NumberToText.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tavlo/qkstatic/DisplayFormatsInternal.h"
#include "tavlo/qkstatic/NumberToTextInternal.h"
#include "tavlo/qkstatic/SerialDateInternal.h"
#include "tavlo/qkstatic/TimeEncodings.h"
#include "zo/kel/NumericCast.h"
#include "zo/kel/TruncateToInt64.h"

using internal::BreakDownDayNumber;
using internal::ClockTime;
using internal::DisplayField;
using internal::DisplayFormat;
using internal::DisplayFormatAt;
using internal::DisplayFormatKind;
using internal::MillisecondsOfDayFraction;
using internal::SplitMilliseconds;

namespace {

constexpr unsigned int kGeneralFormat = 0;
constexpr unsigned int kFirstExponentFormat = 10;
constexpr unsigned int kLastExponentFormat = 18;
constexpr double kElapsedDaysLimit = 2147483647.0;
constexpr unsigned int kOwnBufferSize = 32;

bool ContainsExponent(const char* text) noexcept { return std::strchr(text, 'E') != nullptr; }

int CleanedExponent(unsigned int format, char* buf, unsigned long size, int length) noexcept {
    if (format < kFirstExponentFormat || format > kLastExponentFormat) return length;
    // Only a text that was written in full has its exponent at the end.
    if (static_cast<unsigned long>(length) >= size) return length;
    return internal::RemoveExponentLeadingZeros(buf, length);
}

int PlainNumberText(unsigned int format, char* buf, unsigned long size, double value) {
    int length = std::snprintf(buf, size, DisplayFormatAt(format).pattern, value);
    if (length < 0) {
        length = std::snprintf(buf, size, "%G", value);
        if (length < 0) return SetOverflow(buf, size);
        format = ContainsExponent(buf) ? kFirstExponentFormat : kGeneralFormat;
    } else if (format == kGeneralFormat && ContainsExponent(buf)) {
        format = kFirstExponentFormat;
    }
    return CleanedExponent(format, buf, size, length);
}

int CheckedLength(int length, char* buf, unsigned long size) { return length < 0 ? SetOverflow(buf, size) : length; }

// x86 truncation keeps the low 32 bits of the 64-bit integer.
int HexadecimalText(const DisplayFormat& row, char* buf, unsigned long size, double value) {
    const auto low = static_cast<std::uint32_t>(static_cast<std::uint64_t>(zo::kel::internal::TruncateToInt64(value)));
    return CheckedLength(std::snprintf(buf, size, row.pattern, low), buf, size);
}

double ScaleOf(DisplayFormatKind kind) noexcept {
    switch (kind) {
        case DisplayFormatKind::Hours: return 24.0;
        case DisplayFormatKind::Minutes: return 1440.0;
        default: return 86400.0;
    }
}

// Every field value a time or calendar pattern may print.
struct PrintableFields {
    std::uint32_t totalHours = 0;
    std::uint32_t totalMinutes = 0;
    BrokenDownDate date{};
};

unsigned int FieldValue(const PrintableFields& fields, DisplayField field) noexcept {
    const BrokenDownDate& date = fields.date;
    switch (field) {
        case DisplayField::Year: return date.year;
        case DisplayField::YearOfCentury: return date.year % 100u;
        case DisplayField::Month: return date.month;
        case DisplayField::Day: return date.day;
        case DisplayField::Hour: return date.hour;
        case DisplayField::Minute: return date.minute;
        case DisplayField::Second: return date.second;
        case DisplayField::Millisecond: return date.millisecond;
        case DisplayField::Tenths: return date.millisecond / 100u;
        case DisplayField::Hundredths: return date.millisecond / 10u;
        case DisplayField::TotalHours: return fields.totalHours;
        case DisplayField::TotalMinutes: return fields.totalMinutes;
        case DisplayField::None: break;
    }
    return 0;
}

// Appends `value` as a %[width][.precision][l]u conversion would print it.
char* AppendUnsigned(char* out, unsigned int value, unsigned int width, unsigned int precision) noexcept {
    char digits[10];
    unsigned int count = 0;
    for (; value != 0; value /= 10) digits[count++] = static_cast<char>('0' + value % 10);
    const unsigned int zeros = precision > count ? precision - count : 0;
    const unsigned int spaces = width > zeros + count ? width - zeros - count : 0;
    out = std::fill_n(out, spaces, ' ');
    out = std::fill_n(out, zeros, '0');
    return std::reverse_copy(digits, digits + count, out);
}

// Prints a time or calendar pattern (literal characters and %u conversions
// with optional width, precision and 'l') exactly as snprintf would, without
// its general-purpose parsing: these are the hot formats of every display.
int FieldsText(const DisplayFormat& row, char* buf, unsigned long size, const PrintableFields& fields) {
    // Seven fields of at most ten digits and the literals of the longest pattern.
    char text[96];
    char* out = text;
    const DisplayField* field = row.fields.data();
    for (const char* p = row.pattern; *p != '\0'; ++p) {
        if (*p != '%') {
            *out++ = *p;
            continue;
        }
        unsigned int width = 0, precision = 1;
        for (++p; *p >= '0' && *p <= '9'; ++p) width = width * 10 + static_cast<unsigned int>(*p - '0');
        if (*p == '.') {
            precision = 0;
            for (++p; *p >= '0' && *p <= '9'; ++p) precision = precision * 10 + static_cast<unsigned int>(*p - '0');
        }
        if (*p == 'l') ++p;
        out = AppendUnsigned(out, FieldValue(fields, *field++), width, precision);
    }
    const auto length = static_cast<unsigned long>(out - text);
    const unsigned long kept = std::min(length, size - 1);
    std::memcpy(buf, text, kept);
    buf[kept] = '\0';
    return static_cast<int>(length);
}

int ElapsedText(const DisplayFormat& row, char* buf, unsigned long size, double value) {
    if (!(value < kElapsedDaysLimit && value > -kElapsedDaysLimit)) return SetOverflow(buf, size);
    const auto days = static_cast<std::uint32_t>(zo::kel::internal::TruncateToInt64(value));
    const ClockTime clock = SplitMilliseconds(MillisecondsOfDayFraction(value));
    PrintableFields fields;
    fields.date.hour = clock.hour;
    fields.date.minute = clock.minute;
    fields.date.second = clock.second;
    fields.date.millisecond = clock.millisecond;
    fields.totalHours = clock.hour + days * 24u;
    fields.totalMinutes = clock.minute + days * 1440u + clock.hour * 60u;
    return FieldsText(row, buf, size, fields);
}

int CalendarText(const DisplayFormat& row, char* buf, unsigned long size, double value) {
    PrintableFields fields;
    fields.date = BreakDownDayNumber(value);
    return FieldsText(row, buf, size, fields);
}

}  // namespace

namespace internal {

int RemoveExponentLeadingZeros(char* text, int length) noexcept {
    if (length < 3 || text[length - 3] != '0') return length;
    char* firstZero = text + length - 3;
    if (firstZero[1] != '0') {
        firstZero[0] = firstZero[1];
        firstZero[1] = firstZero[2];
        firstZero[2] = '\0';
        return length - 1;
    }
    firstZero[0] = firstZero[2];
    firstZero[1] = '\0';
    return length - 2;
}

}  // namespace internal

int SetOverflow(char* buf, unsigned long size) {
    const unsigned long count = buf == nullptr ? 0 : std::min(size, static_cast<unsigned long>(sizeof(szOverflow)));
    if (count == 0) return 1;
    std::memcpy(buf, szOverflow, count - 1);
    buf[count - 1] = '\0';
    // Kept as it always was: for two bytes or more the difference does not
    // fit and the checked narrowing reports the overflow as OutOfRange.
    return zo::kel::NumericCast<int>(1ul - count);
}

int NumberToText0(unsigned int format, char* buf, unsigned long size, double value) {
    if (buf == nullptr || size == 0) return 0;
    if (format >= kDisplayFormatCount) format = kGeneralFormat;
    const DisplayFormat& row = DisplayFormatAt(format);
    switch (row.kind) {
        case DisplayFormatKind::Number:
        case DisplayFormatKind::Exponent:
        case DisplayFormatKind::ZeroPaddedInteger: return PlainNumberText(format, buf, size, value);
        case DisplayFormatKind::Hexadecimal: return HexadecimalText(row, buf, size, value);
        case DisplayFormatKind::Hours:
        case DisplayFormatKind::Minutes:
        case DisplayFormatKind::Seconds:
            return CheckedLength(std::snprintf(buf, size, row.pattern, value * ScaleOf(row.kind)), buf, size);
        case DisplayFormatKind::Elapsed: return ElapsedText(row, buf, size, value);
        case DisplayFormatKind::Clock:
        case DisplayFormatKind::Calendar: return CalendarText(row, buf, size, value);
    }
    return 0;
}

int NumberToText(double value, int format, zo::kel::WideString& out) {
    // NumberToText0 never reports a negative length (an overflow throws), so
    // one buffer always does; a longer text is cut to it.
    char buffer[kOwnBufferSize];
    const int result = NumberToText0(static_cast<unsigned int>(format), buffer, sizeof buffer, value);
    out = result == 0 ? zo::kel::WideString() : zo::kel::WideString(static_cast<const char*>(buffer));
    return result;
}

int TimeToText(long ns, int format, char* buf, unsigned int size) {
    return NumberToText0(static_cast<unsigned int>(format), buf, size, static_cast<double>(ns) / kNanosecondsPerDay);
}

int TimeToText(long ns, int format, wchar_t* buf, unsigned int size) {
    char narrow[kOwnBufferSize] = {};
    const double days = static_cast<double>(ns / static_cast<long>(kNanosecondsPerDayInteger));
    const int result = NumberToText0(static_cast<unsigned int>(format), narrow, sizeof(narrow), days);
    if (buf == nullptr || size == 0) return result;
    const std::size_t count = std::min<std::size_t>({size - 1u, kOwnBufferSize - 1, std::strlen(narrow)});
    for (std::size_t i = 0; i < count; ++i) buf[i] = static_cast<wchar_t>(static_cast<signed char>(narrow[i]));
    buf[count] = L'\0';
    return result;
}
