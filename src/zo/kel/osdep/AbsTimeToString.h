// AbsTime as calendar time: broken down through the C library's
// localtime_r/gmtime_r (OutOfRange when the C library cannot), and as text
// through strftime (InvalidArgument for more than three fraction digits).
// Reentrant, except that the system formats select the user's locale for
// LC_TIME with setlocale, which is process-wide.
#pragma once

#include <ctime>

#include "qkdynam_platform.h"
#include "zo/kel/AbsTime.h"
#include "zo/kel/StringBase.h"

namespace zo::kel::osdep {

// With `round`, whole seconds are rounded half to even on the fraction's
// magnitude; without it they are truncated toward zero.
QKDYNAM_API std::tm AbsTimeToLocalDateTime(const AbsTime& time, bool round);
QKDYNAM_API std::tm AbsTimeToUTCDateTime(const AbsTime& time, bool round);

// 0 is UTC; every other value is local time.
enum TimeStringType : int { UTCTime = 0, LocalTime = 1, LocalTimeAlternate = 2 };
// 0 and unknown values: the locale's decimal point; 1: "."; 2: ",".
enum DecimalSeparatorType : int { LocaleDecimalSeparator = 0, PointDecimalSeparator = 1, CommaDecimalSeparator = 2 };

// Select the user's locale for LC_TIME and return "%x" or "%X".
QKDYNAM_API WideString GetSystemDateFormat();
QKDYNAM_API WideString GetSystemTimeFormat();

// `time` as strftime text: a null format is the system's, an empty one drops
// its half; `fractionDigits` (0 to 3) digits follow every %S of the time
// format, with `separator`; `suffix` follows the time format after a space.
// The earliest time prints as the empty string.
QKDYNAM_API WideString AbsTimeToString(AbsTime time, const wchar_t* dateFormat, const wchar_t* timeFormat,
                                       unsigned int fractionDigits, TimeStringType type, bool dateFirst,
                                       const wchar_t* suffix, DecimalSeparatorType separator);

}  // namespace zo::kel::osdep
