// AbsTime as calendar time: broken down through the C library's
// localtime_r/gmtime_r (OutOfRange when the C library cannot), and as text
// through strftime. Reentrant, except that the system formats select the
// user's locale with setlocale, process-wide.
#pragma once

#include <ctime>

#include "qkdynam_platform.h"
#include "zo/kel/AbsTime.h"

namespace zo::kel::osdep {

// With `round`, whole seconds are rounded half to even on the fraction's
// magnitude; without it they are truncated toward zero.
QKDYNAM_API std::tm AbsTimeToLocalDateTime(const AbsTime& time, bool round);
QKDYNAM_API std::tm AbsTimeToUTCDateTime(const AbsTime& time, bool round);

}  // namespace zo::kel::osdep
