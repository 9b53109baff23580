#include "zo/kel/osdep/AbsTimeToString.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <tuple>
#include <utility>

#include "zo/kel/Exception.h"
#include "zo/kel/osdep/SystemClock.h"

namespace {

using zo::kel::AbsTime;
using namespace zo::kel::osdep;
constexpr std::int64_t kUnixEpoch = 2082844800;
constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
constexpr std::uint64_t kQuarter = kHalf >> 1;

// Pins the local time zone for one test.
struct ZonePin {
    explicit ZonePin(const char* zone) { Set(zone); }
    ~ZonePin() { Set("UTC0"); }
    static void Set(const char* zone) { ::setenv("TZ", zone, 1); ::tzset(); }
};

int SecondOf(std::int64_t unixSeconds, std::uint64_t fraction, bool round) {
    return AbsTimeToUTCDateTime(AbsTime::fromWords(kUnixEpoch + unixSeconds, fraction), round).tm_sec;
}

// The file and line of the exception E that `action` throws.
template <class E, class Action>
std::pair<std::string, unsigned int> ThrowSite(Action action) {
    try {
        action();
    } catch (const E& failure) {
        return {failure.getFile(), failure.getLine()};
    }
    ADD_FAILURE() << "no exception";
    return {};
}
const std::string kThisSource = "zo/kel/osdep/AbsTimeToString";

TEST(AbsTimeToDateTime, UnixEpochIs1970) {
    const std::tm utc = AbsTimeToUTCDateTime(AbsTime::fromWords(kUnixEpoch, 0), false);
    EXPECT_EQ((std::tuple{utc.tm_year, utc.tm_mon, utc.tm_mday, utc.tm_hour}), (std::tuple{70, 0, 1, 0}));
    const std::tm start = AbsTimeToUTCDateTime(AbsTime(), false);
    EXPECT_EQ((std::pair{start.tm_year, start.tm_yday}), (std::pair{4, 0}));

    ZonePin zone("EET-2");
    const std::tm local = AbsTimeToLocalDateTime(AbsTime::fromWords(kUnixEpoch, 0), false);
    EXPECT_EQ((std::pair{local.tm_hour, local.tm_mday}), (std::pair{2, 1}));
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
    EXPECT_EQ(SecondOf(-3, kQuarter, true), 57);
    EXPECT_EQ(SecondOf(-3, kQuarter, false), 58);
}

TEST(AbsTimeToDateTime, UnrepresentableTimeThrowsWithItsLine) {
    using zo::kel::exception::OutOfRange;
    EXPECT_EQ(ThrowSite<OutOfRange>([] { AbsTimeToUTCDateTime(zo::kel::kLatestAbsTime, false); }),
              std::pair(kThisSource, 143u));
    EXPECT_EQ(ThrowSite<OutOfRange>([] { AbsTimeToLocalDateTime(zo::kel::kEarliestAbsTime, true); }),
              std::pair(kThisSource, 104u));
}

// The user's locale is the C locale for these tests.
class AbsTimeToStringTest : public ::testing::Test {
protected:
    void SetUp() override { ::setenv("LC_ALL", "C", 1); }
    void TearDown() override { std::setlocale(LC_TIME, "C"); }

    static std::wstring Text(AbsTime time, const wchar_t* date, const wchar_t* clock, unsigned int digits,
                             bool dateFirst = true, const wchar_t* suffix = nullptr,
                             DecimalSeparatorType separator = PointDecimalSeparator,
                             TimeStringType type = UTCTime) {
        return AbsTimeToString(time, date, clock, digits, type, dateFirst, suffix, separator).c_str();
    }
};

TEST_F(AbsTimeToStringTest, JoinsDateAndTimeWithTheFraction) {
    const AbsTime time = AbsTime::fromWords(kUnixEpoch, kQuarter);
    EXPECT_EQ(Text(time, L"%Y-%m-%d", L"%H:%M:%S", 3), L"1970-01-01 00:00:00.250");
    EXPECT_EQ(Text(time, L"%Y-%m-%d", L"%H:%M:%S", 3, false), L"00:00:00.250 1970-01-01");
    EXPECT_EQ(Text(time, L"%Y-%m-%d", L"%H:%M:%S", 1), L"1970-01-01 00:00:00.3");
    EXPECT_EQ(Text(time, L"", L"%H:%M:%S", 2, true, L"UTC"), L"00:00:00.25 UTC");
    EXPECT_EQ(Text(time, L"", L"%S|%#S|%%S|S", 3, true, nullptr, CommaDecimalSeparator), L"00,250|00,250|%S,250|S");
    EXPECT_EQ(Text(time, L"%Y", L"", 3, true, L"UTC"), L"1970");
    EXPECT_EQ(Text(time, L"", L"%S", 3, true, nullptr, LocaleDecimalSeparator), L"00.250");
    EXPECT_EQ(Text(time, L"", L"", 3), L"");
}

TEST_F(AbsTimeToStringTest, FractionThatRoundsUpCarriesIntoTheSeconds) {
    const AbsTime time(static_cast<double>(kUnixEpoch + 59), 0.9996);
    EXPECT_EQ(Text(time, L"", L"%H:%M:%S", 3), L"00:01:00.000");
    EXPECT_EQ(Text(time, L"", L"%H:%M:%S", 0), L"00:01:00");
    // Without a fraction the seconds round half to even.
    EXPECT_EQ(Text(AbsTime::fromWords(kUnixEpoch + 2, kHalf), L"", L"%S", 0), L"02");
    EXPECT_EQ(Text(AbsTime::fromWords(kUnixEpoch + 3, kHalf), L"", L"%S", 0), L"04");
    EXPECT_EQ(Text(AbsTime::fromWords(kUnixEpoch + 3, kHalf), L"", L"%S", 1), L"03.5");
}

TEST_F(AbsTimeToStringTest, NullFormatsAreTheSystemsAndEarliestIsEmpty) {
    const AbsTime time = AbsTime::fromWords(kUnixEpoch + 3661, 0);
    EXPECT_EQ(Text(time, nullptr, L"", 0), L"01/01/70");
    EXPECT_EQ(Text(time, nullptr, nullptr, 0), L"01/01/70 01:01:01");
    EXPECT_EQ(std::wstring(GetSystemDateFormat().c_str()), L"%x");
    EXPECT_EQ(std::wstring(GetSystemTimeFormat().c_str()), L"%X");
    EXPECT_EQ(Text(zo::kel::kEarliestAbsTime, L"%Y", L"%S", 3), L"");
    ZonePin zone("EET-2");
    // Every type but UTC is local time.
    for (const auto type : {LocalTime, static_cast<TimeStringType>(7)}) {
        EXPECT_EQ(Text(time, L"", L"%H:%M", 0, true, nullptr, PointDecimalSeparator, type), L"03:01") << type;
    }
}

TEST_F(AbsTimeToStringTest, MoreThanThreeFractionDigitsThrow) {
    EXPECT_EQ(ThrowSite<zo::kel::exception::InvalidArgument>([] { Text(AbsTime(), L"", L"%S", 4); }),
              std::pair(kThisSource, 558u));
}

// time() reads the coarse clock, which may lag the precise one by a tick; bound with the precise one.
std::int64_t PreciseUnixSeconds() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::int64_t>(now.tv_sec);
}

TEST(SystemClock, AgreesWithTheRealTimeClockToTheSecond) {
    const std::int64_t before = PreciseUnixSeconds() + kUnixEpoch;
    const AbsTime now = GetCurrentAbsTime();
    const std::int64_t after = PreciseUnixSeconds() + kUnixEpoch;
    EXPECT_GE(now.secondsWord(), before);
    EXPECT_LE(now.secondsWord(), after);
    // Whole microseconds: the fraction times 10^6 is within rounding of an integer.
    const double microseconds = now.getFractionImpl() * 1e6;
    EXPECT_NEAR(microseconds, static_cast<double>(static_cast<std::int64_t>(microseconds + 0.5)), 1e-3);
}

}  // namespace
