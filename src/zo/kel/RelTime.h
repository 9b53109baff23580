// A duration as 128-bit fixed-point seconds: signed seconds word and a
// fraction word in 2^-64 s, the same 16-byte layout as AbsTime. Plain value;
// arithmetic wraps modulo 2^128 and nothing throws.
#pragma once

#include <compare>
#include <cstdint>

#include "qkdynam_platform.h"
#include "zo/kel/FixedPoint128.h"

namespace zo::kel {

class QKDYNAM_API RelTime {
public:
    using FixedPoint = nZOSS100::tFixedPoint128<64u, true>;

    constexpr RelTime() noexcept = default;
    constexpr explicit RelTime(const FixedPoint& value) noexcept : value_(value) {}
    // Exact to 2^-64 s, truncated toward zero; infinities and NaN saturate.
    explicit RelTime(double seconds) noexcept;
    static constexpr RelTime fromWords(std::int64_t seconds, std::uint64_t fraction) noexcept {
        return RelTime(FixedPoint(seconds, fraction));
    }

    constexpr std::int64_t secondsWord() const noexcept { return value_.whole(); }
    constexpr std::uint64_t fractionWord() const noexcept { return value_.fraction(); }
    constexpr const FixedPoint& fixedPoint() const noexcept { return value_; }
    // The duration as the nearest double number of seconds.
    double toSeconds() const noexcept;

    constexpr RelTime& operator+=(const RelTime& other) noexcept { return value_ += other.value_, *this; }
    constexpr RelTime& operator-=(const RelTime& other) noexcept { return value_ -= other.value_, *this; }
    friend constexpr RelTime operator+(RelTime a, const RelTime& b) noexcept { return a += b; }
    friend constexpr RelTime operator-(RelTime a, const RelTime& b) noexcept { return a -= b; }
    friend constexpr RelTime operator-(const RelTime& a) noexcept { return RelTime(-a.value_); }

    friend constexpr bool operator==(const RelTime&, const RelTime&) noexcept = default;
    friend constexpr std::strong_ordering operator<=>(const RelTime&, const RelTime&) noexcept = default;

private:
    FixedPoint value_;
};

}  // namespace zo::kel
