#include "zo/kel/SafeInteger.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "zo/kel/KelTestSupport.h"
#include "zo/kel/NumericCast.h"

namespace {

using zo::kel::NumericCast;
using zo::kel::SafeInteger;
using zo::kel::exception::OutOfRange;
using U32 = SafeInteger<std::uint32_t>;

constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();

TEST(SafeInteger, ArithmeticWithinRange) {
    EXPECT_EQ((U32(kMax - 1) + 1u).get(), kMax);
    EXPECT_EQ((U32(5) - 5u).get(), 0u);
    EXPECT_EQ((U32(65535) * 65537u).get(), kMax);
    EXPECT_EQ((U32(7) / 2u).get(), 3u);
    EXPECT_EQ((U32(7) % 4u).get(), 3u);
    U32 counter = 1u;
    counter += 2u;
    counter *= 3u;
    EXPECT_EQ(counter.get(), 9u);
    EXPECT_TRUE(U32(3) < U32(4));
    EXPECT_EQ(U32(std::uint64_t{12}).get(), 12u);
}

TEST(SafeInteger, OverflowThrowsStampedWithTheHeader) {
    EXPECT_THROW(U32(kMax) + 1u, OutOfRange);
    EXPECT_THROW(U32(0) - 1u, OutOfRange);
    EXPECT_THROW(U32(65536) * 65536u, OutOfRange);
    EXPECT_THROW(U32(1) / 0u, OutOfRange);
    EXPECT_THROW(U32(std::uint64_t{1} << 32), OutOfRange);
    EXPECT_THROW(U32(-1), OutOfRange);
    U32 length = kMax;
    const kel_test::Thrown thrown = kel_test::ThrownBy<OutOfRange>([&] { ++length; });
    EXPECT_STREQ(thrown.file, "./zo/kel/SafeInteger");
    EXPECT_GT(thrown.line, 0u);
}

TEST(NumericCast, ChecksEveryNarrowing) {
    EXPECT_EQ(NumericCast<std::uint32_t>(std::int64_t{kMax}), kMax);
    EXPECT_EQ(NumericCast<std::int8_t>(-128), -128);
    EXPECT_THROW(NumericCast<std::uint32_t>(std::int64_t{kMax} + 1), OutOfRange);
    EXPECT_THROW(NumericCast<std::uint32_t>(-1), OutOfRange);
    EXPECT_THROW(NumericCast<std::int8_t>(128), OutOfRange);
    EXPECT_EQ(NumericCast<std::uint16_t>(U32(65535)), 65535);
    EXPECT_THROW(NumericCast<std::uint16_t>(U32(65536)), OutOfRange);

    EXPECT_EQ(NumericCast<std::int32_t>(-2147483648.9), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(NumericCast<std::uint32_t>(4294967295.5), kMax);
    EXPECT_THROW(NumericCast<std::uint32_t>(4294967296.0), OutOfRange);
    EXPECT_THROW(NumericCast<std::int32_t>(-2147483649.0), OutOfRange);
    EXPECT_THROW(NumericCast<std::int32_t>(std::numeric_limits<double>::quiet_NaN()), OutOfRange);
    // The lowest value of a 64-bit type is exact in double, one below it is not.
    EXPECT_EQ(NumericCast<std::int64_t>(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(NumericCast<std::int32_t>(-2147483648.0f), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(NumericCast<std::uint8_t>(-0.75), 0u);
    EXPECT_THROW(NumericCast<std::int64_t>(9223372036854775808.0), OutOfRange);
    EXPECT_STREQ(kel_test::ThrownBy<OutOfRange>([] { NumericCast<std::uint8_t>(300); }).file, "./zo/kel/NumericCast");
}

}  // namespace
