#include "zo/kel/osdep/AbsTimeToString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

#include "zo/kel/Exception.h"
#include "zo/kel/osdep/SystemClock.h"

namespace {

using zo::kel::AbsTime;
using zo::kel::osdep::AbsTimeToLocalDateTime;
using zo::kel::osdep::AbsTimeToUTCDateTime;
constexpr std::int64_t kUnixEpoch = 2082844800;
constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;

// Pins the local time zone for one test.
class ZonePin {
public:
    explicit ZonePin(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    ~ZonePin() {
        ::setenv("TZ", "UTC0", 1);
        ::tzset();
    }
};

int SecondOf(std::int64_t unixSeconds, std::uint64_t fraction, bool round) {
    return AbsTimeToUTCDateTime(AbsTime::fromWords(kUnixEpoch + unixSeconds, fraction), round).tm_sec;
}

TEST(AbsTimeToDateTime, UnixEpochIs1970) {
    const std::tm utc = AbsTimeToUTCDateTime(AbsTime::fromWords(kUnixEpoch, 0), false);
    EXPECT_EQ(utc.tm_year, 70);
    EXPECT_EQ(utc.tm_mon, 0);
    EXPECT_EQ(utc.tm_mday, 1);
    EXPECT_EQ(utc.tm_hour, 0);
    const std::tm start = AbsTimeToUTCDateTime(AbsTime(), false);
    EXPECT_EQ(start.tm_year, 4);
    EXPECT_EQ(start.tm_yday, 0);

    ZonePin zone("EET-2");
    const std::tm local = AbsTimeToLocalDateTime(AbsTime::fromWords(kUnixEpoch, 0), false);
    EXPECT_EQ(local.tm_hour, 2);
    EXPECT_EQ(local.tm_mday, 1);
}

TEST(AbsTimeToDateTime, RoundFlagRoundsHalfToEvenOnTheMagnitude) {
    EXPECT_EQ(SecondOf(10, kHalf, true), 10);
    EXPECT_EQ(SecondOf(11, kHalf, true), 12);
    EXPECT_EQ(SecondOf(10, kHalf + 1, true), 11);
    EXPECT_EQ(SecondOf(11, kHalf, false), 11);
    EXPECT_EQ(SecondOf(11, ~std::uint64_t{0}, false), 11);
    // Before 1970: -3.5 s rounds to -4 (:56), truncates to -3 (:57); -2.75 s rounds to -3.
    EXPECT_EQ(SecondOf(-4, kHalf, true), 56);
    EXPECT_EQ(SecondOf(-4, kHalf, false), 57);
    EXPECT_EQ(SecondOf(-3, std::uint64_t{1} << 62, true), 57);
    EXPECT_EQ(SecondOf(-3, std::uint64_t{1} << 62, false), 58);
}

TEST(AbsTimeToDateTime, UnrepresentableTimeThrowsWithItsLine) {
    try {
        AbsTimeToUTCDateTime(zo::kel::kLatestAbsTime, false);
        FAIL() << "no exception";
    } catch (const zo::kel::exception::OutOfRange& failure) {
        EXPECT_STREQ(failure.getFile(), "zo/kel/osdep/AbsTimeToString");
        EXPECT_EQ(failure.getLine(), 143u);
    }
    try {
        AbsTimeToLocalDateTime(zo::kel::kEarliestAbsTime, true);
        FAIL() << "no exception";
    } catch (const zo::kel::exception::OutOfRange& failure) {
        EXPECT_EQ(failure.getLine(), 104u);
    }
}

TEST(SystemClock, AgreesWithTimeToTheSecond) {
    const std::int64_t before = static_cast<std::int64_t>(std::time(nullptr)) + kUnixEpoch;
    const AbsTime now = zo::kel::osdep::GetCurrentAbsTime();
    const std::int64_t after = static_cast<std::int64_t>(std::time(nullptr)) + kUnixEpoch;
    EXPECT_GE(now.secondsWord(), before);
    EXPECT_LE(now.secondsWord(), after);
    // Whole microseconds: the fraction times 10^6 is within rounding of an integer.
    const double microseconds = now.getFractionImpl() * 1e6;
    EXPECT_NEAR(microseconds, static_cast<double>(static_cast<std::int64_t>(microseconds + 0.5)), 1e-3);
}

}  // namespace
