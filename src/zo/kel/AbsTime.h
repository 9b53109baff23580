// An absolute time: signed 128-bit fixed-point seconds since 1904-01-01
// 00:00:00 UTC (seconds word, then a fraction word in 2^-64 s; that is also
// the order of the 16 bytes copied between objects). Plain value; comparison is
// signed on seconds, then unsigned on fractions. Nothing here throws.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>

#include "qkdynam_platform.h"
#include "zo/kel/FixedPoint128.h"
#include "zo/kel/RelTime.h"

namespace zo::kel {

class QKDYNAM_API AbsTime {
public:
    using FixedPoint = nZOSS100::tFixedPoint128<64u, true>;

    constexpr AbsTime() noexcept = default;
    constexpr explicit AbsTime(const FixedPoint& value) noexcept : value_(value) {}
    // Each double is converted exactly (truncated to 2^-64 s) and the two are
    // added, so either may carry any part: AbsTime(3.0, 0.5) == AbsTime(3.5, 0.0).
    AbsTime(double seconds, double fraction) noexcept;
    static constexpr AbsTime fromWords(std::int64_t seconds, std::uint64_t fraction) noexcept {
        return AbsTime(FixedPoint(seconds, fraction));
    }

    constexpr std::int64_t secondsWord() const noexcept { return value_.whole(); }
    constexpr std::uint64_t fractionWord() const noexcept { return value_.fraction(); }
    constexpr const FixedPoint& fixedPoint() const noexcept { return value_; }

    // The seconds word truncated toward zero, and the fraction word alone as
    // a double in [0, 1] whatever the sign.
    std::int64_t getSecondsImpl() const noexcept;
    double getFractionImpl() const noexcept;
    // The same pair after rounding: a fraction that reads as 1.0 is carried
    // into the seconds (away from zero) and reported as 0.0.
    std::int64_t getSeconds() const noexcept;
    double getFraction() const noexcept;

    // Closed intervals: touching ends intersect.
    static bool doRangesIntersect(const AbsTime& aStart, const AbsTime& aEnd, const AbsTime& bStart,
                                  const AbsTime& bEnd) noexcept;
    // [aStart, aEnd] lies within [bStart, bEnd], ends included.
    static bool isSubRange(const AbsTime& aStart, const AbsTime& aEnd, const AbsTime& bStart,
                           const AbsTime& bEnd) noexcept;

    constexpr AbsTime& operator+=(const RelTime& span) noexcept { return value_ += span.fixedPoint(), *this; }
    constexpr AbsTime& operator-=(const RelTime& span) noexcept { return value_ -= span.fixedPoint(), *this; }
    friend constexpr AbsTime operator+(AbsTime time, const RelTime& span) noexcept { return time += span; }
    friend constexpr AbsTime operator-(AbsTime time, const RelTime& span) noexcept { return time -= span; }
    friend constexpr RelTime operator-(const AbsTime& later, const AbsTime& earlier) noexcept {
        return RelTime(later.value_ - earlier.value_);
    }

    friend constexpr bool operator==(const AbsTime&, const AbsTime&) noexcept = default;
    friend constexpr std::strong_ordering operator<=>(const AbsTime&, const AbsTime&) noexcept = default;

private:
    FixedPoint value_;
};

// The extremes. The earliest time also stands for "no time": it prints empty.
inline constexpr AbsTime kLatestAbsTime =
    AbsTime::fromWords(std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::uint64_t>::max());
inline constexpr AbsTime kEarliestAbsTime = AbsTime::fromWords(std::numeric_limits<std::int64_t>::min(), 0);

// Seconds from 1904-01-01 to 1970-01-01 (24,107 days): Unix seconds plus this are AbsTime seconds.
inline constexpr std::int64_t kSecondsFrom1904To1970 = 2082844800;

}  // namespace zo::kel
