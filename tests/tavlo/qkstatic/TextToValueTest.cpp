#include "tavlo/qkstatic/TextToValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tavlo/qkstatic/SerialDate.h"
#include "zo/kel/Exception.h"

namespace {

using zo::kel::exception::OutOfRange;
constexpr double kUntouched = -12345.678;

struct Accepted {
    const char* text;
    double value;
};

void ExpectAccepted(int (*recognise)(const char*, double*), const Accepted& row) {
    double out = kUntouched;
    ASSERT_NE(recognise(row.text, &out), 0) << '"' << row.text << '"';
    EXPECT_DOUBLE_EQ(out, row.value) << '"' << row.text << '"';
}

void ExpectRejected(int (*recognise)(const char*, double*), const char* text) {
    double out = kUntouched;
    EXPECT_EQ(recognise(text, &out), 0) << '"' << text << '"';
    EXPECT_EQ(out, kUntouched) << '"' << text << '"';
}

using Recogniser = int (*)(const char*, double*);
void ExpectAllAccepted(Recogniser recognise, std::initializer_list<Accepted> rows) {
    for (const Accepted& row : rows) ExpectAccepted(recognise, row);
}
void ExpectAllRejected(Recogniser recognise, std::initializer_list<const char*> texts) {
    for (const char* text : texts) ExpectRejected(recognise, text);
}

// A reporting recogniser's result, or nothing when it says false.
template <class Char, class Result>
std::optional<Result> Recognised(bool (*recognise)(const Char*, Result&), const Char* text) {
    Result out{};
    return recognise(text, out) ? std::optional(out) : std::nullopt;
}
template <class Char>
std::optional<double> Numeric(const Char* text) { return Recognised<Char, double>(IsNumericText, text); }
template <class Char>
std::optional<double> Days(const Char* text) { return Recognised<Char, double>(IsTimeText, text); }
template <class Char>
std::optional<long> Nanoseconds(const Char* text) { return Recognised<Char, long>(IsTimeText, text); }
template <class Char>
std::optional<bool> Logical(const Char* text) { return Recognised<Char, bool>(IsLogicalText, text); }

TEST(AsciiToNumber, AcceptsDecimalExponentAndHexadecimal) {
    ExpectAllAccepted(AsciiToNumber, {
        {"0", 0.0},       {"12", 12.0},          {"  12", 12.0},      {"12  ", 12.0},     {"-12", -12.0},
        {"+7", 7.0},      {"00012", 12.0},       {"1.5", 1.5},        {".5", 0.5},        {"5.", 5.0},
        {"-.5", -0.5},    {"0.25", 0.25},        {"0x1F", 31.0},      {"0X1f", 31.0},     {"0xE", 14.0},
        {"0xe", 14.0},    {"0x0", 0.0},          {"0x1ABCDEF", 28036591.0}, {"1e3", 1000.0}, {"1E+3", 1000.0},
        {"1.5E-3", 0.0015}, {"0e5", 0.0},        {"1e05", 1e5},       {"1.5E3 ", 1500.0}, {"-0.25e1", -2.5},
        {"1e- ", 1.0},    {"1e000000000000000005", 1e5}, {"123456789012", 123456789012.0}
    });
    double out = 0.0;
    ASSERT_NE(AsciiToNumber("-0", &out), 0);
    EXPECT_TRUE(std::signbit(out));
    ASSERT_NE(AsciiToNumber("1e400", &out), 0);
    EXPECT_TRUE(std::isinf(out));
}

TEST(AsciiToNumber, RejectsIncompleteAndForeignText) {
    ExpectAllRejected(AsciiToNumber, {
        "", " ", "-", ".", "1e", "1e+", "0x", "0 ", "0x1F ", "-0x1F", "1,5", "1\t", "12a", "0x1G", "1..2", "1e1.5",
        "1 2", "+-1", "e5", "0xx1", "1ee5", "abc", "0x-1", "1 e5", "1.5.", "0xABC", "1y", "1/2", "+", "12 x"
    });
    EXPECT_EQ(AsciiToNumber(nullptr, nullptr), 0);
}

TEST(AsciiToNumber, ExponentIsSixteenBitsChecked) {
    double out = kUntouched;
    EXPECT_NE(AsciiToNumber("1e-65535", &out), 0);
    EXPECT_EQ(out, 0.0);
    out = kUntouched;
    EXPECT_THROW(AsciiToNumber("1e65536", &out), OutOfRange);
    EXPECT_EQ(out, kUntouched);
}

TEST(AsciiToDays, AcceptsOneToFourGroups) {
    ExpectAllAccepted(AsciiToDays, {
        {"", 0.0}, {"   ", 0.0}, {"30", 30.0 / 86400}, {"1:30", 1.0 / 1440 + 30.0 / 86400}, {"12:30", 750.0 / 86400},
        {"1:00:00:00", 1.0}, {"25:00:00", 25.0 / 24}, {"1:02:03.5", 1.0 / 24 + 2.0 / 1440 + 3.5 / 86400},
        {"2:23:59:59.75", 2.0 + 23.0 / 24 + 59.0 / 1440 + 59.75 / 86400}, {"5:", 5.0 / 1440}, {"1::", 1.0 / 24},
        {":5", 5.0 / 86400}, {".5", 0.5 / 86400}, {"5.", 5.0 / 86400}, {" 1:30  ", 1.0 / 1440 + 30.0 / 86400},
        {"0:0:1.9", 1.9 / 86400}, {"90:59", 90.0 / 1440 + 59.0 / 86400}
    });
}

TEST(AsciiToDays, RejectsReachedLimitsAndBadShapes) {
    ExpectAllRejected(AsciiToDays, {
        "1:24:00:00", "1:60", "1:2:60", "1:60:00", "0:0:0:60", "1:2:3:4:5", ":", ".", "::", "1.5:3", "1 2", "1:2 3",
        "a", "-1", "1.2.3", "1,5", "12:30 x", "1:00:00:00:"
    });
}

int DateTimeMDY(const char* text, double* out) { return AsciiToDateTime(text, out, 0); }
int DateTimeDMY(const char* text, double* out) { return AsciiToDateTime(text, out, 53); }

TEST(AsciiToDateTime, FieldOrderFollowsTheFormat) {
    // Every text is day 61, 1900-03-01, under each of its formats. With '-' the
    // day/month/year order (53) reads month-year-day.
    const std::pair<const char*, std::vector<int>> rows[] = {
        {"03/01/1900", {0, -1, 46, 50, 64, 75, 77, 1000}}, {"01/03/1900", {53, 51, 55, 67, 69, 76}},
        {"1900-03-01", {70, 0}}, {"1900/03/01", {70, 71, 72, 74}}, {"03-1900-01", {53}}};
    for (const auto& [text, formats] : rows) {
        for (int format : formats) {
            double out = 0.0;
            ASSERT_NE(AsciiToDateTime(text, &out, format), 0) << text << " " << format;
            EXPECT_EQ(out, 61.0);
        }
    }
    ExpectRejected(DateTimeDMY, "1900-03-01");
    ExpectRejected(DateTimeMDY, "03-01-1900");
}

TEST(AsciiToDateTime, CalendarRules) {
    ExpectAllAccepted(DateTimeMDY, {{"02/29/1900", 60.0}, {"02/29/2000", 36585.0}, {"02/29/2004", 38046.0},
                                    {" 3/1/1900", 61.0}, {"12/31/2078", static_cast<double>(DateDay0(31, 12, 2078))}});
    ExpectAllRejected(DateTimeMDY, {
        "02/29/2001", "12/31/2079", "01/01/1899", "01/01/0100", "13/01/2000", "00/01/2000", "04/31/2000",
        "01/00/2000", "03-01/1900", "03/01/19/00", "0301", "/", "//", "03/01/1900x", "03:01", "03.01.1900", "1900-03",
        ""
    });
}

unsigned int LocalYear() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return static_cast<unsigned int>(local.tm_year + 1900);
}

TEST(AsciiToDateTime, TwoDigitYearsAndMissingYearsFollowTheCurrentYear) {
    const unsigned int current = LocalYear();
    char late[32], early[32];
    std::snprintf(late, sizeof(late), "01/01/%02u", (current + 49) % 100);
    std::snprintf(early, sizeof(early), "01/01/%02u", (current + 50) % 100);
    ExpectAllAccepted(DateTimeMDY, {{late, static_cast<double>(DateDay0(1, 1, current + 49))},
                                    {early, static_cast<double>(DateDay0(1, 1, current - 50))},
                                    {"03/01", static_cast<double>(DateDay0(1, 3, current))}});
    ExpectAccepted(DateTimeDMY, {"01/03", static_cast<double>(DateDay0(1, 3, current))});
}

TEST(AsciiToDateTime, ClockTimeAfterOneSpace) {
    ExpectAllAccepted(DateTimeMDY, {
        {"03/01/1900 12:00", 61.5}, {"03/01/1900 12:00  ", 61.5}, {"03/01/1900 :30", 61.0 + 30.0 / 1440},
        {"03/01/1900 23:59:59", 61.0 + 59.0 / 86400 + 59.0 / 1440 + 23.0 / 24},
        {"03/01/1900 12:00:30.5", 61.0 + (500 / 8.64e7 + 30.0 / 86400 + 0.5)},
        {"03/01/1900 12:00:30.123", 61.0 + (123 / 8.64e7 + 30.0 / 86400 + 0.5)},
        {"03/01/1900 12:00:30.05", 61.0 + (50 / 8.64e7 + 30.0 / 86400 + 0.5)}
    });
    ExpectAllRejected(DateTimeMDY, {
        "03/01/1900 ", "03/01/1900  ", "03/01/1900 12", "03/01/1900 24:00", "03/01/1900 12:60", "03/01/1900 12:00:60",
        "03/01/1900 12:00:30.", "03/01/1900 12:00:30.1234", "03/01/1900 12:00:00:00", "03/01/1900 :",
        "03/01/1900 12.5", "03/01/1900 12:00 1", "03/01/1900 12:00pm"
    });
}

TEST(AsciiToDateTime, FieldsBeyondSixteenBitsThrow) {
    double out = kUntouched;
    EXPECT_THROW(AsciiToDateTime("99999/1/1", &out, 0), OutOfRange);
    EXPECT_THROW(AsciiToDateTime("1/1/2000 99999:00", &out, 0), OutOfRange);
    EXPECT_THROW(AsciiToDateTime("03011900", &out, 0), OutOfRange);
    EXPECT_EQ(out, kUntouched);
    EXPECT_EQ(AsciiToDateTime("65535/1/1", &out, 0), 0);
}

int TextToNumberMDY(const char* text, double* out) { return TextToNumber0(text, out, 0); }

TEST(TextToNumber0, TriesNumberThenElapsedThenDate) {
    ExpectAllRejected(TextToNumberMDY, {"", ".", "abc", nullptr});
    ExpectAllAccepted(TextToNumberMDY, {{"12", 12.0}, {"12:30", 750.0 / 86400}, {"  ", 0.0}});
    double out = kUntouched;
    ASSERT_TRUE(TextToNumber0("01/03/1900", &out, 53));
    EXPECT_EQ(out, 61.0);
}

TEST(IsTimeText, DaysOrDateAsDaysOrNanoseconds) {
    EXPECT_EQ(Days(""), 0.0);
    EXPECT_EQ(Days("03/01/1900 12:00"), 61.5);
    EXPECT_EQ(Nanoseconds("0:0:1.9"), 1000000000);
    EXPECT_EQ(Nanoseconds("03/01/1900 12:00"), 5313600000000000);
    // A rejected text leaves the result untouched.
    double days = kUntouched;
    long ns = -1;
    EXPECT_FALSE(IsTimeText(".", days));
    EXPECT_EQ(days, kUntouched);
    EXPECT_FALSE(IsTimeText("x", ns));
    EXPECT_EQ(ns, -1);
    EXPECT_EQ(Numeric("0x1F"), 31.0);
    EXPECT_EQ(Numeric("12:30"), std::nullopt);
}

TEST(IsLogicalText, AcceptsTheVocabularyIgnoringCase) {
    struct Row {
        const char* text;
        bool value;
    };
    const Row rows[] = {{"on", true},     {"YES", true},          {"y", true},          {"True", true},
                        {"T", true},      {"It Just Works", true}, {"UNBELIEVABLE!", true}, {"off", false},
                        {"No", false},    {"N", false},            {"FALSE", false},      {"nil", false},
                        {"Yeah, Right", false}};
    for (const Row& row : rows) {
        bool narrow = !row.value, wide = !row.value;
        ASSERT_TRUE(IsLogicalText(row.text, narrow)) << row.text;
        EXPECT_EQ(narrow, row.value) << row.text;
        const std::wstring wideText(row.text, row.text + std::strlen(row.text));
        ASSERT_TRUE(IsLogicalText(wideText.c_str(), wide)) << row.text;
        EXPECT_EQ(wide, row.value) << row.text;
    }
    for (const char* text : {"maybe", "", " yes", "yes ", "1", "0", "of", "yeah,right", "unbelievable", "o"}) {
        bool value = true;
        EXPECT_FALSE(IsLogicalText(text, value)) << '"' << text << '"';
        EXPECT_TRUE(value);
    }
    EXPECT_EQ(Logical<char>(nullptr), std::nullopt);
    EXPECT_EQ(Logical<wchar_t>(nullptr), std::nullopt);
    EXPECT_EQ(Logical(L""), std::nullopt);
}

TEST(WideRecognisers, BehaveAsTheNarrowOnes) {
    double number = kUntouched;
    EXPECT_EQ(Numeric(L" 0x1F"), 31.0);
    EXPECT_EQ(Numeric(L"12:30"), std::nullopt);
    EXPECT_EQ(Numeric<wchar_t>(nullptr), std::nullopt);
    EXPECT_DOUBLE_EQ(Days(L"12:30").value_or(-1), 750.0 / 86400);
    EXPECT_EQ(Days(L""), 0.0);
    long ns = -1;
    EXPECT_TRUE(IsTimeText(L"03/01/1900 12:00", ns));
    EXPECT_EQ(ns, 5313600000000000);
    EXPECT_FALSE(IsTimeText(L".", ns));
    EXPECT_THROW(IsTimeText(L"1/1/2000 99999:00", ns), OutOfRange);
    EXPECT_EQ(ns, 5313600000000000);
    // Characters outside US-ASCII fail in the conversion.
    EXPECT_THROW(IsNumericText(L"1\u00e9", number), zo::kel::exception::Exception);
}

TEST(AsciiToDateTime, ConcurrentFirstCallsAgreeOnTheCurrentYear) {
    double results[4] = {};
    std::thread threads[4];
    for (int i = 0; i < 4; ++i) {
        threads[i] = std::thread([&results, i] {
            for (int repeat = 0; repeat < 200; ++repeat) AsciiToDateTime(i % 2 ? "03/01" : "1/1/75 1:00", &results[i], 0);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(results[1], results[3]);
    EXPECT_EQ(results[0], results[2]);
    EXPECT_EQ(results[1], static_cast<double>(DateDay0(1, 3, LocalYear())));
}

}  // namespace
