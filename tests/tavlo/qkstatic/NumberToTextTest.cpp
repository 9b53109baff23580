#include "tavlo/qkstatic/NumberToText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <string>

#include "tavlo/qkstatic/DisplayFormatsInternal.h"
#include "tavlo/qkstatic/NumberToTextInternal.h"
#include "tavlo/qkstatic/SerialDateInternal.h"
#include "zo/kel/Exception.h"

namespace {

using namespace internal;
using zo::kel::exception::OutOfRange;

struct TextRow {
    unsigned int format;
    double value;
    const char* text;
};

std::string Text(unsigned int format, double value) {
    char buffer[64];
    const int length = NumberToText0(format, buffer, sizeof(buffer), value);
    EXPECT_EQ(length, static_cast<int>(std::strlen(buffer))) << format << " " << value;
    return buffer;
}

constexpr double kOneHourTwoMinutes3456 = (3600.0 + 120.0 + 3.456) / 86400.0;

TEST(NumberToText0, EveryKindPrintsItsPattern) {
    const TextRow rows[] = {
        {3, 1.005, "1.00"}, {0, 1e20, "1E+20"}, {0, 123.5, "123.5"}, {0, 1e-5, "1E-05"}, {0, -0.0, "-0"},
        {500, 2.5, "2.5"}, {1, 2.5, "2"}, {9, 1.0 / 3.0, "0.33333333"}, {10, 12345.0, "1E+04"},
        {12, 1e100, "1.00E+100"}, {18, -2.5e-7, "-2.50000000E-07"}, {19, 5.0, "05"}, {25, 3.7, "00000004"},
        {26, 0.5, "12"}, {28, 0.1, "2.40"}, {29, 1.0, "1440"}, {32, 0.5, "43200"}, {34, 1.0 / 86400.0, "1.00"},
        {56, 10.0, "0xA"}, {59, 255.9, "0x00FF"}, {59, -1.0, "0xFFFFFFFF"}, {63, 4294967301.0, "0x00000005"},
        {57, std::numeric_limits<double>::quiet_NaN(), "0x00"}, {57, 1e30, "0x00"}, {35, 0.25, "06:00"},
        {36, 1.5, "36:00:00"}, {36, 0.0, "00:00:00"}, {37, 1.0 + kOneHourTwoMinutes3456, "25:02:03.4"},
        {38, 1.0 + kOneHourTwoMinutes3456, "25:02:03.45"}, {39, 1.0 + kOneHourTwoMinutes3456, "25:02:03.456"},
        {40, 1.5, "2160:00"}, {41, kOneHourTwoMinutes3456, "62:03.4"}, {42, kOneHourTwoMinutes3456, "62:03.45"},
        {43, kOneHourTwoMinutes3456, "62:03.456"}, {36, 1000.0 / 3.0, "8000:00:00"}, {44, 0.75, "18:00"},
        {45, 123.5 + 1.0 / 86400.0, "12:00:01"}, {73, 2.0 + kOneHourTwoMinutes3456, "01:02:03.4"},
        {46, 61.5, "03/01 12:00"}, {47, 61.5, "03/01 12:00:00"}, {48, 36526.0, "01/01/00"},
        {49, 36526.0, "01/01/00 00:00"}, {50, 36526.0 + kOneHourTwoMinutes3456, "01/01/00 01:02:03"},
        {51, 61.5, "01/03 12:00"}, {52, 61.5, "01/03 12:00:00"}, {53, 36557.0, "01/02/00"},
        {54, 36557.0, "01/02/00 00:00"}, {55, 36557.5, "01/02/00 12:00:00"}, {64, 61.0, "03/01/1900"},
        {64, 60.0, "02/29/1900"}, {64, 1.0, "01/01/1900"}, {65, 61.5, "03/01/1900 12:00"},
        {66, 61.5, "03/01/1900 12:00:00"}, {67, 61.0, "01/03/1900"}, {68, 61.0, "01/03/1900 00:00"},
        {69, 61.0, "01/03/1900 00:00:00"}, {70, 65536.0, "1900-01-00"}, {70, 65535.0, "2079-06-04"},
        {71, 61.0, "1900-03-01 00:00"}, {72, 45000.5, "2023-03-15 12:00:00"},
        {74, 45000.0 + kOneHourTwoMinutes3456, "2023-03-15 01:02:03.456"},
        {75, 45000.0 + kOneHourTwoMinutes3456, "03/15/2023 01:02:03.456"},
        {76, 45000.0 + kOneHourTwoMinutes3456, "15/03/2023 01:02:03.456"},
    };
    for (const TextRow& row : rows) EXPECT_EQ(Text(row.format, row.value), row.text) << "format " << row.format;
}

TEST(NumberToText0, CutTextReportsItsFullLength) {
    char buffer[8];
    EXPECT_EQ(NumberToText0(72, buffer, 5, 61.0), 19);
    EXPECT_STREQ(buffer, "1900");
    EXPECT_EQ(NumberToText0(12, buffer, 4, 1e100), 9);
    EXPECT_STREQ(buffer, "1.0");
    std::memset(buffer, 'x', sizeof(buffer));
    EXPECT_EQ(NumberToText0(3, buffer, 0, 1.0), 0);
    EXPECT_EQ(buffer[0], 'x');
    EXPECT_EQ(NumberToText0(3, nullptr, 8, 1.0), 0);
}

TEST(NumberToText0, ElapsedOverflowShowsAsterisksThenThrows) {
    char buffer[32];
    EXPECT_THROW(NumberToText0(36, buffer, sizeof(buffer), 2147483647.0), OutOfRange);
    EXPECT_STREQ(buffer, "***************");
    EXPECT_THROW(NumberToText0(40, buffer, 5, -2147483648.0), OutOfRange);
    EXPECT_STREQ(buffer, "****");
    EXPECT_THROW(NumberToText0(39, buffer, sizeof(buffer), std::numeric_limits<double>::quiet_NaN()), OutOfRange);
    EXPECT_EQ(NumberToText0(36, buffer, 1, 1e10), 0);
    EXPECT_STREQ(buffer, "");
    // Total hours are 32-bit unsigned: 2147483646 × 24 wraps.
    EXPECT_EQ(Text(36, 2147483646.0), "4294967248:00:00");
}

TEST(NumberToText0, NegativeTimesOfDayThrow) {
    EXPECT_THROW(Text(36, -1.5), OutOfRange);
    EXPECT_THROW(Text(72, -0.25), OutOfRange);
    EXPECT_THROW(Text(64, std::numeric_limits<double>::infinity()), OutOfRange);
    // A whole negative day has no negative time of day: it wraps as 16 or 32 bits.
    EXPECT_EQ(Text(64, -1.0), "06/04/2079");
    EXPECT_EQ(Text(35, -1.0), "4294967272:00");
}

TEST(SetOverflow, WritesAsterisksThenReportsThroughTheCheckedNarrowing) {
    char buffer[32];
    std::memset(buffer, 'x', sizeof(buffer));
    EXPECT_EQ(SetOverflow(buffer, 0), 1);
    EXPECT_EQ(buffer[0], 'x');
    EXPECT_EQ(SetOverflow(buffer, 1), 0);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_THROW(SetOverflow(buffer, 2), OutOfRange);
    EXPECT_STREQ(buffer, "*");
    EXPECT_THROW(SetOverflow(buffer, sizeof(buffer)), OutOfRange);
    EXPECT_STREQ(buffer, szOverflow);
    EXPECT_EQ(std::strlen(szOverflow), 15u);
}

TEST(NumberToText0, ExponentCleanUpDropsLeadingZerosOfThreeDigitExponents) {
    struct Row {
        const char* before;
        const char* after;
    };
    const Row rows[] = {{"1.5E+015", "1.5E+15"}, {"1E+005", "1E+5"}, {"1E-000", "1E-0"}, {"1E+05", "1E+05"},
                        {"1E+100", "1E+100"},    {"00", "00"}};
    for (const Row& row : rows) {
        char text[16];
        std::strcpy(text, row.before);
        const int length = RemoveExponentLeadingZeros(text, static_cast<int>(std::strlen(text)));
        EXPECT_STREQ(text, row.after);
        EXPECT_EQ(length, static_cast<int>(std::strlen(row.after)));
    }
}

TEST(TimeToText, NarrowKeepsTheTimeOfDayWideDropsIt) {
    constexpr long kDay = 86400000000000;
    char narrow[32];
    EXPECT_EQ(TimeToText(61 * kDay + kDay / 2, 72, narrow, sizeof(narrow)), 19);
    EXPECT_STREQ(narrow, "1900-03-01 12:00:00");
    EXPECT_EQ(TimeToText(kDay / 4, 35, narrow, sizeof(narrow)), 5);
    EXPECT_STREQ(narrow, "06:00");

    wchar_t wide[32];
    EXPECT_EQ(TimeToText(61 * kDay + kDay / 2, 72, wide, 32), 19);
    EXPECT_STREQ(wide, L"1900-03-01 00:00:00");
    struct Row {
        long ns;
        int format;
        unsigned int size;
        const wchar_t* text;
    };
    for (const Row& row : {Row{61 * kDay, 72, 5, L"1900"}, Row{61 * kDay, 72, 1, L""}, Row{-kDay / 2, 0, 32, L"0"},
                           Row{2 * kDay, -5, 32, L"2"}}) {
        TimeToText(row.ns, row.format, wide, row.size);
        EXPECT_STREQ(wide, row.text) << row.ns << " " << row.format;
    }
}

// The C library's rendering of a calendar row's pattern, the reference for the library's own printer.
std::string SnprintfCalendar(const DisplayFormat& row, double value) {
    const BrokenDownDate d = BreakDownDayNumber(value);
    std::map<DisplayField, unsigned int> byField = {
        {DisplayField::Year, d.year},     {DisplayField::YearOfCentury, d.year % 100u},
        {DisplayField::Month, d.month},   {DisplayField::Day, d.day},
        {DisplayField::Hour, d.hour},     {DisplayField::Minute, d.minute},
        {DisplayField::Second, d.second}, {DisplayField::Millisecond, d.millisecond},
        {DisplayField::Tenths, d.millisecond / 100u}};
    unsigned int v[kDisplayFieldsMax];
    for (unsigned int i = 0; i < kDisplayFieldsMax; ++i) v[i] = byField[row.fields[i]];
    char text[64];
    std::snprintf(text, sizeof(text), row.pattern, v[0], v[1], v[2], v[3], v[4], v[5], v[6]);
    return text;
}

TEST(NumberToText0, FieldPatternsPrintAsTheCLibraryAndCutLikeIt) {
    const double values[] = {0.0, 1.0, 61.5, 366.999, 36526.0417, 45000.5 + 1234.0 / 8.64e7, 65535.99999};
    for (unsigned int format = 35; format < kDisplayFormatCount; ++format) {
        const DisplayFormat& row = DisplayFormatAt(format);
        if (row.kind == DisplayFormatKind::Hexadecimal) continue;
        for (double value : values) {
            const std::string full = Text(format, value);
            if (row.kind != DisplayFormatKind::Elapsed) {
                EXPECT_EQ(full, SnprintfCalendar(row, value)) << format;
            }
            for (unsigned long size = 1; size <= full.size(); ++size) {
                char cut[64];
                ASSERT_EQ(NumberToText0(format, cut, size, value), static_cast<int>(full.size()));
                ASSERT_EQ(std::string(cut), full.substr(0, size - 1)) << format << " size " << size;
            }
        }
    }
}

TEST(NumberToText, FillsAWideStringFromItsOwnBuffer) {
    zo::kel::WideString out(L"old");
    EXPECT_EQ(NumberToText(45000.5, 72, out), 19);
    EXPECT_STREQ(out.c_str(), L"2023-03-15 12:00:00");
    EXPECT_EQ(NumberToText(255.0, 57, out), 4);
    EXPECT_STREQ(out.c_str(), L"0xFF");
    // Its buffer holds 31 characters; the full length is still returned.
    EXPECT_EQ(NumberToText(1e40, 1, out), 41);
    EXPECT_EQ(out.length(), 31u);
    EXPECT_STREQ(out.c_str(), L"1000000000000000030378602842700");
    EXPECT_THROW(NumberToText(3e9, 36, out), OutOfRange);
}

}  // namespace
