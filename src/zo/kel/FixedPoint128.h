// 128-bit fixed-point numbers with 64 fraction bits, the arithmetic under
// AbsTime and RelTime: two 64-bit words, fraction first, so a value copies as
// 16 bytes in the order the wire uses. Only <64u, true> and <64u, false> exist.
// Plain values; arithmetic wraps modulo 2^128, and only division by zero
// throws (zo::kel::exception::InvalidArgument).
#pragma once

#include <compare>
#include <cstdint>
#include <type_traits>

#include "qkdynam_platform.h"

namespace nZOSS100 {

// Tag selecting the exact conversion from double.
struct tFixedPoint128FloatingPointCtor {};

template <unsigned FractionBits, bool IsSigned>
class QKDYNAM_API tFixedPoint128 {
    static_assert(FractionBits == 64u, "only 64.64 fixed point exists");

public:
    using Whole = std::conditional_t<IsSigned, std::int64_t, std::uint64_t>;

    constexpr tFixedPoint128() noexcept = default;
    constexpr tFixedPoint128(Whole whole, std::uint64_t fraction) noexcept : fraction_(fraction), whole_(whole) {}

    // Exact conversion of a finite double, truncated toward zero to 2^-64.
    // Infinity and NaN saturate to the largest (positive sign) or the most
    // negative bit pattern; integral parts beyond 63 bits lose their high bits.
    tFixedPoint128(double value, tFixedPoint128FloatingPointCtor) noexcept;

    constexpr Whole whole() const noexcept { return whole_; }
    constexpr std::uint64_t fraction() const noexcept { return fraction_; }

    // Arithmetic shift by `count` bits (a negative count shifts left). With
    // `round`, the last bit shifted out is added back: round half up.
    tFixedPoint128& RightShift(int count, bool round) noexcept;

    // The 64.64 quotient, truncated toward zero; its integral part keeps the
    // low 64 bits. Throws InvalidArgument for a zero divisor.
    static tFixedPoint128 DivideInternal(const tFixedPoint128& dividend, const tFixedPoint128& divisor);

    // The 64.64 product, truncated toward zero, modulo 2^128.
    tFixedPoint128& operator*=(const tFixedPoint128& factor) noexcept;
    tFixedPoint128& operator/=(const tFixedPoint128& divisor) { return *this = DivideInternal(*this, divisor); }

    operator long double() const noexcept;

    constexpr tFixedPoint128& operator+=(const tFixedPoint128& other) noexcept {
        return *this = FromBits(Bits() + other.Bits());
    }
    constexpr tFixedPoint128& operator-=(const tFixedPoint128& other) noexcept {
        return *this = FromBits(Bits() - other.Bits());
    }
    friend constexpr tFixedPoint128 operator+(tFixedPoint128 a, const tFixedPoint128& b) noexcept { return a += b; }
    friend constexpr tFixedPoint128 operator-(tFixedPoint128 a, const tFixedPoint128& b) noexcept { return a -= b; }
    friend constexpr tFixedPoint128 operator-(const tFixedPoint128& a) noexcept { return FromBits(0 - a.Bits()); }

    friend constexpr bool operator==(const tFixedPoint128& a, const tFixedPoint128& b) noexcept {
        return a.whole_ == b.whole_ && a.fraction_ == b.fraction_;
    }
    // Whole words compare with the instantiation's signedness, fractions unsigned.
    friend constexpr std::strong_ordering operator<=>(const tFixedPoint128& a, const tFixedPoint128& b) noexcept {
        if (auto order = a.whole_ <=> b.whole_; order != 0) return order;
        return a.fraction_ <=> b.fraction_;
    }

private:
    __extension__ using Bits128 = unsigned __int128;

    constexpr Bits128 Bits() const noexcept {
        return (static_cast<Bits128>(static_cast<std::uint64_t>(whole_)) << 64) | fraction_;
    }
    static constexpr tFixedPoint128 FromBits(Bits128 bits) noexcept {
        return {static_cast<Whole>(static_cast<std::uint64_t>(bits >> 64)), static_cast<std::uint64_t>(bits)};
    }
    constexpr bool IsNegative() const noexcept { return IsSigned && (Bits() >> 127) != 0; }
    constexpr Bits128 Magnitude() const noexcept { return IsNegative() ? 0 - Bits() : Bits(); }

    std::uint64_t fraction_ = 0;
    Whole whole_ = 0;
};

extern template class QKDYNAM_API tFixedPoint128<64u, true>;
extern template class QKDYNAM_API tFixedPoint128<64u, false>;

}  // namespace nZOSS100
