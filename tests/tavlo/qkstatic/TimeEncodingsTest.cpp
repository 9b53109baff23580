#include "tavlo/qkstatic/TimeEncodings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

constexpr long kOffset = 94353120000000000;

TEST(TimeEncodings, EpochsMeetAt18991230) {
    EXPECT_EQ(QKTIMEToTime64(kOffset), 0u);
    EXPECT_EQ(Time64ToQKTIME(0), kOffset);
    EXPECT_EQ(QKTIMEToDays(kOffset), 0.0);
    EXPECT_EQ(DaysToQKTIME(1.0), kOffset + 864000000000);
    EXPECT_EQ(QKTIMEToDays(kOffset + 864000000000 * 3 / 2), 1.5);
    EXPECT_EQ(Time64ToQKTIME(199), kOffset + 1);
    EXPECT_EQ(Time64ToQKTIME(86400000000000), kOffset + 864000000000);
}

TEST(TimeEncodings, TicksBefore1899WrapModulo2To64) {
    EXPECT_EQ(QKTIMEToTime64(0), 0x7D0F09B9F7050000u);
    EXPECT_EQ(QKTIMEToTime64(kOffset - 1), ~std::uint64_t{0} - 99);
    EXPECT_EQ(Time64ToQKTIME(~0ul), kOffset + 184467440737095516);
}

TEST(TimeEncodings, FileTimeSplitsIntoHalvesLowFirst) {
    const _FILETIME ticks = Time64ToFILETIME(0);
    EXPECT_EQ(ticks.dwLowDateTime, 0xA90CC000u);
    EXPECT_EQ(ticks.dwHighDateTime, 0x014F35A9u);
    EXPECT_EQ(FILETIMEToTime64(ticks), 0u);
    EXPECT_EQ(FILETIMEToTime64(Time64ToFILETIME(123456789012345600)), 123456789012345600u);
    static_assert(sizeof(FILETIME) == 8);
}

TEST(TimeEncodings, DaysToNanosecsTruncatesLikeTheProcessor) {
    EXPECT_EQ(DaysToNanosecs(1.0), 86400000000000u);
    EXPECT_EQ(DaysToNanosecs(1.5e-13), 12u);
    EXPECT_EQ(DaysToNanosecs(-1.0), 18446657673709551616u);
    EXPECT_EQ(DaysToNanosecs(200000.0), 17280000000000000000u);
    EXPECT_EQ(DaysToNanosecs(1e6), 0x8000000000000000u);
    EXPECT_EQ(DaysToNanosecs(-1e6), 0x8000000000000000u);
    EXPECT_EQ(DaysToNanosecs(std::numeric_limits<double>::quiet_NaN()), 0x8000000000000000u);
    EXPECT_EQ(NanosecsToDays(86400000000000u * 2), 2.0);
    EXPECT_EQ(NanosecsToDays(~0ul), 18446744073709551615.0 / 8.64e13);
}

}  // namespace
