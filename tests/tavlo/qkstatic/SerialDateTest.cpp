#include "tavlo/qkstatic/SerialDate.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <tuple>
#include <vector>

#include "tavlo/qkstatic/SerialDateInternal.h"
#include "zo/kel/Exception.h"

namespace {

using namespace internal;

struct DateRow {
    double dayNumber;
    BrokenDownDate expected;
};

TEST(SerialDate, BreaksDayNumbersDown) {
    // year, dayOfYear, month, day, dayOfWeek, hour, minute, second, ms, daysInMonth, daysInYear
    const DateRow rows[] = {
        {0.0, {1900, 0, 1, 0, 7, 0, 0, 0, 0, 31, 366}},
        {1.0, {1900, 1, 1, 1, 1, 0, 0, 0, 0, 31, 366}},
        {60.0, {1900, 60, 2, 29, 4, 0, 0, 0, 0, 29, 366}},
        {61.25, {1900, 61, 3, 1, 5, 6, 0, 0, 0, 31, 366}},
        {366.0, {1900, 366, 12, 31, 2, 0, 0, 0, 0, 31, 366}},
        {367.0, {1901, 1, 1, 1, 3, 0, 0, 0, 0, 31, 365}},
        {1461.0, {1903, 365, 12, 31, 5, 0, 0, 0, 0, 31, 365}},
        {1520.0, {1904, 59, 2, 28, 1, 0, 0, 0, 0, 29, 366}},
        {45000.5 + 1234.0 / 8.64e7, {2023, 74, 3, 15, 4, 12, 0, 1, 234, 31, 365}},
        {65535.999, {2079, 155, 6, 4, 1, 23, 58, 33, 600, 30, 365}},
        {65536.0, {1900, 0, 1, 0, 7, 0, 0, 0, 0, 31, 366}},
        {65537.5, {1900, 1, 1, 1, 1, 12, 0, 0, 0, 31, 366}},
        {-1.0, {2079, 155, 6, 4, 1, 0, 0, 0, 0, 30, 365}},
    };
    for (const DateRow& row : rows) {
        double dayNumber = row.dayNumber;
        unsigned short fields[11];
        GetDate0(&dayNumber, fields);
        const unsigned short* expected = &row.expected.year;
        for (int field = 0; field < 11; ++field) {
            EXPECT_EQ(fields[field], expected[field]) << row.dayNumber << " field " << field;
        }
    }
}

TEST(SerialDate, NegativeTimeOfDayThrows) {
    EXPECT_THROW(BreakDownDayNumber(-1.5), zo::kel::exception::OutOfRange);
    EXPECT_THROW(BreakDownDayNumber(1e300), zo::kel::exception::OutOfRange);
    EXPECT_THROW(SplitMilliseconds(-1), zo::kel::exception::OutOfRange);
    EXPECT_THROW(SplitMilliseconds(3600000LL * 65536), zo::kel::exception::OutOfRange);
    const ClockTime clock = SplitMilliseconds(3600000LL * 65535 + 61001);
    EXPECT_EQ(std::tuple(clock.hour, clock.minute, clock.second, clock.millisecond), std::tuple(65535, 1, 1, 1));
}

TEST(SerialDate, DateDay0InvertsGetDate0OverTheWholeRange) {
    // day, month, year, day number
    const unsigned int rows[][4] = {{1, 1, 1900, 1},     {29, 2, 1900, 60},    {1, 3, 1900, 61},
                                    {1, 1, 2000, 36526}, {4, 6, 2079, 65535}, {5, 6, 2079, 0}};
    for (const auto& row : rows) EXPECT_EQ(DateDay0(row[0], row[1], row[2]), row[3]) << row[2] << "-" << row[1];
    for (unsigned int day = 1; day <= 65535; ++day) {
        const BrokenDownDate date = BreakDownDayNumber(day);
        ASSERT_EQ(DateDay0(date.day, date.month, date.year), day);
    }
}

TEST(SerialDate, ConcurrentCallsAgree) {
    // Day 1521 is 1904-02-29, day 426 is 1901-03-01.
    auto work = [](double dayNumber, unsigned short expectedDay, bool& ok) {
        ok = true;
        for (int i = 0; i < 2000; ++i) ok = ok && BreakDownDayNumber(dayNumber).day == expectedDay;
    };
    bool leapOk = false, plainOk = false;
    std::thread leap(work, 1521.0, 29, std::ref(leapOk)), plain(work, 426.0, 1, std::ref(plainOk));
    leap.join();
    plain.join();
    EXPECT_TRUE(leapOk && plainOk);
}

}  // namespace
