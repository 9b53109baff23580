#include "zo/kel/FixedPoint128.h"

#include <bit>
#include <cmath>

#include "zo/kel/Exception.h"

namespace nZOSS100 {

namespace {

__extension__ using Bits128 = unsigned __int128;
__extension__ using SignedBits128 = __int128;

constexpr int kExponentOfInfinity = 2047;
// A significand placed in the low bits is shifted right by this minus the
// biased exponent: 1075 takes it to an integer, 64 more keep 64 fraction bits.
constexpr int kSignificandShiftBias = 1011;

// The fraction bits of r * 2^64 / b for a remainder r < b, by long division.
std::uint64_t FractionOfQuotient(Bits128 remainder, Bits128 divisor) noexcept {
    if ((divisor >> 64) == 0) return static_cast<std::uint64_t>((remainder << 64) / divisor);
    std::uint64_t fraction = 0;
    for (int bit = 0; bit < 64; ++bit) {
        const bool carry = (remainder >> 127) != 0;
        remainder <<= 1;
        fraction <<= 1;
        if (carry || remainder >= divisor) {
            remainder -= divisor;
            fraction |= 1;
        }
    }
    return fraction;
}

// Bits 64 to 191 of the 256-bit product of two 128-bit magnitudes.
Bits128 MiddleOfProduct(Bits128 a, Bits128 b) noexcept {
    const Bits128 aLow = static_cast<std::uint64_t>(a), aHigh = a >> 64;
    const Bits128 bLow = static_cast<std::uint64_t>(b), bHigh = b >> 64;
    return ((aHigh * bHigh) << 64) + aLow * bHigh + aHigh * bLow + ((aLow * bLow) >> 64);
}

}  // namespace

template <unsigned FractionBits, bool IsSigned>
tFixedPoint128<FractionBits, IsSigned>::tFixedPoint128(double value, tFixedPoint128FloatingPointCtor) noexcept {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int exponent = static_cast<int>((bits >> 52) & 0x7FF);
    const bool negative = (bits >> 63) != 0;
    if (exponent == kExponentOfInfinity) {
        *this = negative ? FromBits(Bits128{1} << 127) : FromBits(~Bits128{0} >> 1);
        return;
    }
    // The implicit bit is set for zero and subnormals too: they shift out to 0.
    const std::uint64_t significand = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
    *this = FromBits(significand);
    RightShift(kSignificandShiftBias - exponent, false);
    if (negative) *this = -*this;
}

template <unsigned FractionBits, bool IsSigned>
tFixedPoint128<FractionBits, IsSigned>& tFixedPoint128<FractionBits, IsSigned>::RightShift(int count,
                                                                                          bool round) noexcept {
    const Bits128 bits = Bits();
    if (count <= 0) {
        *this = count > -128 ? FromBits(bits << -count) : FromBits(0);
        return *this;
    }
    const bool lastOut = count <= 128 && ((bits >> (count - 1)) & 1) != 0;
    Bits128 shifted;
    if constexpr (IsSigned) {
        // A shift by 127 already fills every bit with the sign: the result of any longer shift.
        shifted = static_cast<Bits128>(static_cast<SignedBits128>(bits) >> (count < 128 ? count : 127));
    } else {
        shifted = count < 128 ? bits >> count : 0;
    }
    *this = FromBits(round && lastOut ? shifted + 1 : shifted);
    return *this;
}

template <unsigned FractionBits, bool IsSigned>
tFixedPoint128<FractionBits, IsSigned> tFixedPoint128<FractionBits, IsSigned>::DivideInternal(
    const tFixedPoint128& dividend, const tFixedPoint128& divisor) {
    const Bits128 a = dividend.Magnitude(), b = divisor.Magnitude();
    if (b == 0) ZO_THROW(zo::kel::exception::InvalidArgument);
    const Bits128 quotient = ((a / b) << 64) | FractionOfQuotient(a % b, b);
    return FromBits(dividend.IsNegative() != divisor.IsNegative() ? 0 - quotient : quotient);
}

template <unsigned FractionBits, bool IsSigned>
tFixedPoint128<FractionBits, IsSigned>& tFixedPoint128<FractionBits, IsSigned>::operator*=(
    const tFixedPoint128& factor) noexcept {
    const Bits128 product = MiddleOfProduct(Magnitude(), factor.Magnitude());
    *this = FromBits(IsNegative() != factor.IsNegative() ? 0 - product : product);
    return *this;
}

template <unsigned FractionBits, bool IsSigned>
tFixedPoint128<FractionBits, IsSigned>::operator long double() const noexcept {
    if constexpr (IsSigned) return std::ldexp(static_cast<long double>(static_cast<SignedBits128>(Bits())), -64);
    return std::ldexp(static_cast<long double>(Bits()), -64);
}

template class tFixedPoint128<64u, true>;
template class tFixedPoint128<64u, false>;

}  // namespace nZOSS100
