// Double to 64-bit integer with the processor's conversion rule, so that the
// time and format code gives one defined answer for every double: the value
// truncated toward zero, or INT64_MIN (the x86 "integer indefinite") for NaN
// and for values outside the signed 64-bit range. Never throws.
#pragma once

#include <cstdint>
#include <limits>

namespace zo::kel::internal {

constexpr std::int64_t TruncateToInt64(double value) noexcept {
    // 2^63 is exact in a double; every double strictly inside (-2^63 - 1, 2^63) truncates into range.
    constexpr double kPastHighest = 9223372036854775808.0;
    if (!(value > -kPastHighest - 1.0 && value < kPastHighest)) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

}  // namespace zo::kel::internal
