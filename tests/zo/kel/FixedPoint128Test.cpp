#include "zo/kel/FixedPoint128.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "zo/kel/Exception.h"

namespace {

using Signed = nZOSS100::tFixedPoint128<64u, true>;
using Unsigned = nZOSS100::tFixedPoint128<64u, false>;
constexpr std::uint64_t kAllOnes = ~std::uint64_t{0};
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

Signed FromDouble(double value) { return Signed(value, nZOSS100::tFixedPoint128FloatingPointCtor{}); }

struct DoubleRow {
    double value;
    std::int64_t whole;
    std::uint64_t fraction;
};

TEST(FixedPoint128, DoubleConvertsExactlyTruncatingTowardZero) {
    const DoubleRow rows[] = {
        {0.0, 0, 0}, {-0.0, 0, 0}, {0.25, 0, 0x4000000000000000}, {-0.25, -1, 0xC000000000000000},
        {1.5, 1, 0x8000000000000000}, {std::ldexp(1.0, -64), 0, 1}, {-std::ldexp(1.0, -64), -1, kAllOnes},
        {std::ldexp(1.0, -65), 0, 0}, {1e-30, 0, 0}, {std::numeric_limits<double>::denorm_min(), 0, 0},
        {1.0 / 3.0, 0, 0x5555555555555400}, {-1.0 / 3.0, -1, 0xAAAAAAAAAAAAAC00},
        {4503599627370497.0, 4503599627370497, 0}, {std::ldexp(1.0, 62), std::int64_t{1} << 62, 0},
        // Integral parts beyond 63 bits lose their high bits.
        {std::ldexp(1.0, 63), kMin, 0}, {std::ldexp(1.0, 64), 0, 0},
        {std::numeric_limits<double>::infinity(), kMax, kAllOnes}, {-std::numeric_limits<double>::infinity(), kMin, 0},
        {std::numeric_limits<double>::quiet_NaN(), kMax, kAllOnes}, {-std::numeric_limits<double>::quiet_NaN(), kMin, 0},
    };
    for (const DoubleRow& row : rows) {
        const Signed converted = FromDouble(row.value);
        EXPECT_EQ(converted.whole(), row.whole) << row.value;
        EXPECT_EQ(converted.fraction(), row.fraction) << row.value;
    }
    const Unsigned unsignedHalf(0.5, nZOSS100::tFixedPoint128FloatingPointCtor{});
    EXPECT_EQ(unsignedHalf, Unsigned(0, 0x8000000000000000));
}

TEST(FixedPoint128, RightShiftIsArithmeticAndCanRound) {
    EXPECT_EQ(Signed(-1, 0).RightShift(1, false), Signed(-1, 0x8000000000000000));
    EXPECT_EQ(Signed(3, 0).RightShift(65, false), Signed(0, 1));
    EXPECT_EQ(Signed(0, 3).RightShift(1, false), Signed(0, 1));
    EXPECT_EQ(Signed(0, 3).RightShift(1, true), Signed(0, 2));
    EXPECT_EQ(Signed(0, 2).RightShift(2, true), Signed(0, 1));
    EXPECT_EQ(Signed(0, 1).RightShift(2, true), Signed(0, 0));
    EXPECT_EQ(Signed(-1, 0).RightShift(200, false), Signed(-1, kAllOnes));
    EXPECT_EQ(Signed(5, 0).RightShift(128, false), Signed(0, 0));
    EXPECT_EQ(Unsigned(kAllOnes, 0).RightShift(64, false), Unsigned(0, kAllOnes));
    EXPECT_EQ(Signed(0, 0x8000000000000001).RightShift(-1, false), Signed(1, 2));
    EXPECT_EQ(Signed(0, 1).RightShift(-127, false), Signed(kMin, 0));
    EXPECT_EQ(Signed(0, 1).RightShift(-128, false), Signed(0, 0));
    EXPECT_EQ(Signed(0, 1).RightShift(std::numeric_limits<int>::min(), false), Signed(0, 0));
}

TEST(FixedPoint128, DivisionGivesTheTruncated6464Quotient) {
    EXPECT_EQ(Signed::DivideInternal(Signed(1, 0), Signed(3, 0)), Signed(0, 0x5555555555555555));
    EXPECT_EQ(Signed::DivideInternal(Signed(-1, 0), Signed(3, 0)), Signed(-1, 0xAAAAAAAAAAAAAAAB));
    EXPECT_EQ(Signed::DivideInternal(Signed(-7, 0), Signed(-2, 0)), Signed(3, 0x8000000000000000));
    // Divisors below 1.0 take the short path, larger ones the long division.
    EXPECT_EQ(Signed::DivideInternal(Signed(1, 0), Signed(0, 0x8000000000000000)), Signed(2, 0));
    EXPECT_EQ(Signed::DivideInternal(Signed(0, 1), Signed(kMax, kAllOnes)), Signed(0, 0));
    EXPECT_EQ(Unsigned::DivideInternal(Unsigned(1500000, 0), Unsigned(1000000, 0)), Unsigned(1, 0x8000000000000000));
    EXPECT_EQ(Unsigned::DivideInternal(Unsigned(kAllOnes, 0), Unsigned(kAllOnes, kAllOnes)),
              Unsigned(0, kAllOnes));
    Signed value(10, 0);
    value /= Signed(4, 0);
    EXPECT_EQ(value, Signed(2, 0x8000000000000000));
    EXPECT_THROW(Signed::DivideInternal(Signed(1, 0), Signed(0, 0)), zo::kel::exception::InvalidArgument);
}

Signed Product(Signed a, const Signed& b) { return a *= b; }
Unsigned Product(Unsigned a, const Unsigned& b) { return a *= b; }

TEST(FixedPoint128, MultiplicationGivesTheTruncated6464Product) {
    EXPECT_EQ(Product(Signed(1, 0x8000000000000000), Signed(2, 0x8000000000000000)), Signed(3, 0xC000000000000000));
    // -1.5 * 2.5
    EXPECT_EQ(Product(Signed(-2, 0x8000000000000000), Signed(2, 0x8000000000000000)), Signed(-4, 0x4000000000000000));
    EXPECT_EQ(Product(Signed(0, 1), Signed(0, 1)), Signed(0, 0));
    // -2^-64 halved truncates toward zero.
    EXPECT_EQ(Product(Signed(-1, kAllOnes), Signed(0, 0x8000000000000000)), Signed(0, 0));
    EXPECT_EQ(Product(Unsigned(0x100000000, 0), Unsigned(0x100000000, 0)), Unsigned(0, 0));
}

TEST(FixedPoint128, LongDoubleAndOrdering) {
    EXPECT_EQ(static_cast<long double>(Signed(-1, 0xC000000000000000)), -0.25L);
    EXPECT_EQ(static_cast<long double>(Unsigned(kAllOnes, 0)), 18446744073709551615.0L);
    EXPECT_EQ(static_cast<long double>(Signed(2, 0x8000000000000000)), 2.5L);
    EXPECT_LT(Signed(-1, kAllOnes), Signed(0, 0));
    EXPECT_LT(Signed(0, 1), Signed(0, kAllOnes));
    EXPECT_LT(Unsigned(1, 0), Unsigned(kAllOnes, 0));
    EXPECT_EQ(Signed(0, kAllOnes) + Signed(0, 1), Signed(1, 0));
    EXPECT_EQ(Signed(0, 0) - Signed(0, 1), Signed(-1, kAllOnes));
    EXPECT_EQ(-Signed(kMin, 0), Signed(kMin, 0));
}

}  // namespace
