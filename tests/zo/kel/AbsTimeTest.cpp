#include "zo/kel/AbsTime.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace {

using zo::kel::AbsTime;
using zo::kel::RelTime;
constexpr std::uint64_t kAllOnes = ~std::uint64_t{0};
constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;

TEST(AbsTime, DoublePairAddsAsFixedPoint) {
    EXPECT_EQ(AbsTime(3.0, 0.5), AbsTime(3.5, 0.0));
    EXPECT_EQ(AbsTime(3.0, 0.5), AbsTime::fromWords(3, kHalf));
    EXPECT_EQ(AbsTime(1.0, -0.25), AbsTime::fromWords(0, 0xC000000000000000));
    EXPECT_EQ(AbsTime(0.75, 0.75), AbsTime::fromWords(1, kHalf));
    EXPECT_EQ(AbsTime(-0.25, 0.0), AbsTime::fromWords(-1, 0xC000000000000000));

    // The 16 bytes are the fraction word, then the seconds word.
    const AbsTime time = AbsTime::fromWords(0x0102030405060708, 0x1112131415161718);
    std::uint64_t words[2];
    static_assert(sizeof(AbsTime) == sizeof(words));
    std::memcpy(words, &time, sizeof(words));
    EXPECT_EQ(words[0], 0x1112131415161718u);
    EXPECT_EQ(words[1], 0x0102030405060708u);
}

TEST(AbsTime, SecondsAndFractionTruncateAndCarry) {
    const AbsTime minusQuarter = AbsTime::fromWords(-1, 0xC000000000000000);
    EXPECT_EQ(minusQuarter.getSecondsImpl(), 0);
    EXPECT_EQ(minusQuarter.getFractionImpl(), 0.75);
    EXPECT_EQ(AbsTime::fromWords(-5, 0).getSecondsImpl(), -5);

    const AbsTime almostNext = AbsTime::fromWords(41, kAllOnes);
    EXPECT_EQ(almostNext.getFractionImpl(), 1.0);
    EXPECT_EQ(almostNext.getSeconds(), 42);
    EXPECT_EQ(almostNext.getFraction(), 0.0);
    EXPECT_EQ(AbsTime::fromWords(-5, kAllOnes).getSeconds(), -5);

    // Within 2^-52 of 1.0 carries; three half-steps further does not.
    EXPECT_EQ(AbsTime::fromWords(7, 0xFFFFFFFFFFFFF000).getSeconds(), 8);
    const AbsTime below = AbsTime::fromWords(7, 0xFFFFFFFFFFFFE800);
    EXPECT_EQ(below.getSeconds(), 7);
    EXPECT_EQ(below.getFraction(), 1.0 - 3.0 / 9007199254740992.0);
    EXPECT_EQ(AbsTime::fromWords(7, kHalf).getFraction(), 0.5);
}

TEST(AbsTime, RangesAreClosedIntervals) {
    const AbsTime t1(1.0, 0.0), t2(2.0, 0.0), t3(3.0, 0.0), t4(4.0, 0.0);
    EXPECT_TRUE(AbsTime::doRangesIntersect(t1, t2, t2, t3));
    EXPECT_TRUE(AbsTime::doRangesIntersect(t2, t3, t1, t2));
    EXPECT_FALSE(AbsTime::doRangesIntersect(t1, t2, t3, t4));
    EXPECT_FALSE(AbsTime::doRangesIntersect(t3, t4, t1, t2));
    EXPECT_TRUE(AbsTime::isSubRange(t1, t2, t1, t2));
    EXPECT_TRUE(AbsTime::isSubRange(t2, t3, t1, t4));
    EXPECT_FALSE(AbsTime::isSubRange(t1, t3, t2, t4));
}

TEST(AbsTime, OrdersBySignedSecondsThenUnsignedFraction) {
    EXPECT_LT(zo::kel::kEarliestAbsTime, AbsTime::fromWords(-1, kAllOnes));
    EXPECT_LT(AbsTime::fromWords(-1, kAllOnes), AbsTime());
    EXPECT_LT(AbsTime::fromWords(5, 1), AbsTime::fromWords(5, kHalf));
    EXPECT_LT(AbsTime::fromWords(std::numeric_limits<std::int64_t>::max(), kAllOnes - 1), zo::kel::kLatestAbsTime);
    EXPECT_EQ(zo::kel::kEarliestAbsTime.secondsWord(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(zo::kel::kEarliestAbsTime.fractionWord(), 0u);
}

TEST(RelTime, ConvertsAndCombinesWithAbsTime) {
    EXPECT_EQ(RelTime(-0.25), RelTime::fromWords(-1, 0xC000000000000000));
    EXPECT_EQ(RelTime(-0.25).toSeconds(), -0.25);
    EXPECT_EQ(RelTime(86400.5).toSeconds(), 86400.5);
    EXPECT_EQ(RelTime(1.5) + RelTime(0.75), RelTime(2.25));
    EXPECT_EQ(-RelTime(1.5), RelTime(-1.5));
    EXPECT_LT(RelTime(-1e-9), RelTime());

    const AbsTime start(100.0, 0.25);
    EXPECT_EQ(start + RelTime(0.75), AbsTime(101.0, 0.0));
    EXPECT_EQ(start - RelTime(100.5), AbsTime(-0.25, 0.0));
    EXPECT_EQ(AbsTime(101.0, 0.0) - start, RelTime(0.75));
}

}  // namespace
