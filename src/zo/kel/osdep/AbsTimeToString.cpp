#include "zo/kel/osdep/AbsTimeToString.h"

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cwchar>

#include "zo/kel/Exception.h"

namespace zo::kel::osdep {

namespace {

// Users and logs match these lines of this source, so they stay fixed.
constexpr unsigned int kLocalBreakDownFailureLine = 104;
constexpr unsigned int kUTCBreakDownFailureLine = 143;
constexpr unsigned int kTooManyFractionDigitsLine = 558;

constexpr unsigned int kFractionDigitsMax = 3;
constexpr std::size_t kFractionTextSize = 20;
constexpr std::size_t kStrftimeBufferSize = 512;

constexpr std::uint64_t kHalfSecond = std::uint64_t{1} << 63;

// Unix seconds of `time`, truncated toward zero or rounded half to even.
std::int64_t UnixSeconds(const AbsTime& time, bool round) noexcept {
    const auto unixWord = static_cast<std::uint64_t>(time.secondsWord()) - static_cast<std::uint64_t>(kSecondsFrom1904To1970);
    const bool negative = static_cast<std::int64_t>(unixWord) < 0;
    std::uint64_t seconds = unixWord;
    std::uint64_t magnitude = time.fractionWord();
    if (negative && magnitude != 0) {
        magnitude = 0 - magnitude;
        seconds += 1;
    }
    if (round && (magnitude > kHalfSecond || (magnitude == kHalfSecond && (seconds & 1) != 0))) {
        seconds += negative ? ~std::uint64_t{0} : 1;
    }
    return static_cast<std::int64_t>(seconds);
}

// `time` through the C library's localtime_r or gmtime_r.
std::tm BrokenDown(const AbsTime& time, bool round, std::tm* (*breakDown)(const std::time_t*, std::tm*),
                   unsigned int failureLine) {
    const std::time_t seconds = UnixSeconds(time, round);
    std::tm broken{};
    if (breakDown(&seconds, &broken) == nullptr) throw exception::OutOfRange(failureLine, ZO_SOURCE_FILE);
    return broken;
}

WideString DecimalSeparatorText(DecimalSeparatorType type) {
    switch (type) {
        case PointDecimalSeparator: return WideString(L".");
        case CommaDecimalSeparator: return WideString(L",");
        default: return WideString(std::localeconv()->decimal_point);
    }
}

// The fraction of `time` as separator and n digits, rounded; a fraction that
// rounds up to a whole second moves `time` to the next second instead.
WideString FractionText(AbsTime& time, unsigned int digits, DecimalSeparatorType separator) {
    const double scale = exp10(digits);
    double scaled = time.getFraction() * scale + 0.5;
    if (scaled >= scale) {
        time = AbsTime::fromWords(static_cast<std::int64_t>(static_cast<std::uint64_t>(time.secondsWord()) + 1),
                                  time.fractionWord());
        scaled = 0.0;
    }
    wchar_t text[kFractionTextSize];
    if (std::swprintf(text, kFractionTextSize, L"%ls%0*d", DecimalSeparatorText(separator).c_str(),
                      static_cast<int>(digits), static_cast<int>(scaled)) < 0) {
        return WideString();
    }
    return WideString(text);
}

// Puts `fraction` after every %S (and %#S) of `format`.
void DoInsertFraction(WideString& format, const WideString& fraction) {
    for (unsigned int at = format.find(L'S'); at != WideString::npos; at = format.find(L'S', at + 1)) {
        const bool plain = at > 0 && format[at - 1] == L'%';
        const bool alternate = at >= 2 && format[at - 1] == L'#' && format[at - 2] == L'%';
        if (plain || alternate) format = WideString(WideString(format, 0, at + 1) + fraction, WideString(format, at + 1));
    }
}

WideString Joined(const WideString& first, const WideString& second) {
    if (first.empty() || second.empty()) return first + second;
    return first + L" " + second;
}

WideString FormatOrSystem(const wchar_t* format, WideString (*systemFormat)()) {
    return format != nullptr ? WideString(format) : systemFormat();
}

}  // namespace

std::tm AbsTimeToLocalDateTime(const AbsTime& time, bool round) {
    return BrokenDown(time, round, localtime_r, kLocalBreakDownFailureLine);
}

std::tm AbsTimeToUTCDateTime(const AbsTime& time, bool round) {
    return BrokenDown(time, round, gmtime_r, kUTCBreakDownFailureLine);
}

WideString GetSystemDateFormat() {
    std::setlocale(LC_TIME, "");
    return WideString(L"%x");
}

WideString GetSystemTimeFormat() {
    std::setlocale(LC_TIME, "");
    return WideString(L"%X");
}

WideString AbsTimeToString(AbsTime time, const wchar_t* dateFormat, const wchar_t* timeFormat,
                           unsigned int fractionDigits, TimeStringType type, bool dateFirst, const wchar_t* suffix,
                           DecimalSeparatorType separator) {
    if (fractionDigits > kFractionDigitsMax) throw exception::InvalidArgument(kTooManyFractionDigitsLine, ZO_SOURCE_FILE);
    if (time == kEarliestAbsTime) return WideString();
    const WideString date = FormatOrSystem(dateFormat, GetSystemDateFormat);
    WideString clock = FormatOrSystem(timeFormat, GetSystemTimeFormat);
    if (suffix != nullptr && *suffix != L'\0' && !clock.empty()) clock = clock + L" " + suffix;
    if (fractionDigits != 0 && !clock.empty()) DoInsertFraction(clock, FractionText(time, fractionDigits, separator));

    const NarrowString format(dateFirst ? Joined(date, clock) : Joined(clock, date));
    const bool round = fractionDigits == 0;
    const std::tm broken = type == UTCTime ? AbsTimeToUTCDateTime(time, round) : AbsTimeToLocalDateTime(time, round);
    char text[kStrftimeBufferSize];
    const std::size_t length = std::strftime(text, sizeof(text), format.c_str(), &broken);
    return WideString(text, text + length);
}

}  // namespace zo::kel::osdep
