#include <array>
#include <cstdint>
#include <ctime>

#include "tavlo/qkstatic/DisplayFormatsInternal.h"
#include "tavlo/qkstatic/SerialDateInternal.h"
#include "tavlo/qkstatic/TextToValue.h"
#include "tavlo/qkstatic/TimeTextCharacters.h"

namespace {

enum Slot : std::uint8_t { MonthSlot, DaySlot, YearSlot };
using FieldOrder = std::array<Slot, 3>;
constexpr FieldOrder kMonthDayYear = {MonthSlot, DaySlot, YearSlot};
constexpr FieldOrder kDayMonthYear = {DaySlot, MonthSlot, YearSlot};
constexpr FieldOrder kYearMonthDay = {YearSlot, MonthSlot, DaySlot};

constexpr unsigned int kEarliestYear = 1900;
constexpr unsigned int kLatestYear = 2078;
constexpr unsigned int kEarliestCurrentYear = 1988;

using namespace internal;

// The display format's first date field decides the order of typed fields.
FieldOrder OrderOf(int format) noexcept {
    for (DisplayField field : DisplayFormatAt(static_cast<unsigned int>(format)).fields) {
        if (field == DisplayField::Day) return kDayMonthYear;
        if (field == DisplayField::Year || field == DisplayField::YearOfCentury) return kYearMonthDay;
        if (field == DisplayField::Month) break;
    }
    return kMonthDayYear;
}

// Read once per process from the local clock, never below 1988.
unsigned int CurrentYear() noexcept {
    static const unsigned int year = [] {
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        const int localYear = localtime_r(&now, &local) != nullptr ? local.tm_year + 1900 : 0;
        return localYear < static_cast<int>(kEarliestCurrentYear) ? kEarliestCurrentYear
                                                                  : static_cast<unsigned int>(localYear);
    }();
    return year;
}

struct TypedDate {
    std::array<std::uint16_t, 3> slots{};
    int separators = 0;
    char separator = '\0';
    const char* timePart = nullptr;  // after the space that ended the date, or null
};

// The date fields up to the end of the text or the first space after a digit.
bool ReadDateFields(const char* text, const FieldOrder& order, TypedDate& date) {
    std::uint16_t field = 0;
    bool anyDigit = false;
    const char* p = text;
    for (; *p != '\0'; ++p) {
        const char c = *p;
        if (IsDigit(c)) {
            field = WithDigit(field, c);
            anyDigit = true;
        } else if (c == '-' || c == '/') {
            if ((date.separator != '\0' && date.separator != c) || date.separators == 2) return false;
            date.separator = c;
            date.slots[order[date.separators++]] = field;
            field = 0;
        } else if (c == ' ') {
            if (!anyDigit) continue;
            date.timePart = p + 1;
            break;
        } else {
            return false;
        }
    }
    date.slots[order[date.separators]] = field;
    return anyDigit && date.separators > 0;
}

struct CalendarDate {
    unsigned int year, month, day;
};

bool ToCalendarDate(const TypedDate& typed, const FieldOrder& order, CalendarDate& date) {
    date = {typed.slots[YearSlot], typed.slots[MonthSlot], typed.slots[DaySlot]};
    if (typed.separator == '-' && order != kYearMonthDay) {
        date = {typed.slots[MonthSlot], typed.slots[DaySlot], typed.slots[YearSlot]};
        if (date.year < kEarliestYear) return false;
    }
    const unsigned int current = CurrentYear();
    if (typed.separators == 1) {
        date.year = current;
    } else if ((date.year >= 100 && date.year < kEarliestYear) || date.year > kLatestYear) {
        return false;
    } else if (date.year < 100) {
        const int offset = (static_cast<int>(date.year) + 2150 - static_cast<int>(current)) % 100;
        date.year = current - 50 + static_cast<unsigned int>(offset < 0 ? offset + 100 : offset);
    }
    if (date.month < 1 || date.month > 12) return false;
    const unsigned int februaryDays = date.year % 4 == 0 ? 29 : 28;
    return date.day >= 1 && date.day <= DaysInMonth(date.month, februaryDays);
}

// clang-format off
constexpr Step kTimeTable[6][4] = {
    //        space  digit   ':'    '.'
    /* 0 */ {go(0), acc(1), st(2), X},
    /* 1 */ {go(5), acc(1), st(2), X},
    /* 2 */ {go(5), acc(2), st(3), X},
    /* 3 */ {go(5), acc(3), X,     st(4)},
    /* 4 */ {go(5), acc(4), X,     X},
    /* 5 */ {go(5), X,      X,     X},
};
// clang-format on
constexpr int kFractionState = 4;

// Hour, minute, second and the digits after the point, with their count.
struct TypedTime {
    std::array<std::uint16_t, 4> fields{};
    int stores = 0;
    int fractionDigits = 0;
};

bool ReadTimeFields(const char* text, TypedTime& time) {
    std::uint16_t number = 0;
    bool anyDigit = false;
    int state = 0;
    for (const char* p = text; *p != '\0'; ++p) {
        const TimeClass timeClass = ClassOf(*p);
        if (timeClass == Invalid) return false;
        const Step step = kTimeTable[state][timeClass];
        switch (step.command) {
            case Command::None: break;
            case Command::Accumulate:
                number = WithDigit(number, *p);
                anyDigit = true;
                if (state == kFractionState) ++time.fractionDigits;
                break;
            case Command::Store:
                time.fields[time.stores++] = number;
                number = 0;
                break;
            case Command::Fraction:  // not used by the clock table
            case Command::Fail: return false;
        }
        state = step.next;
    }
    time.fields[time.stores] = number;
    return anyDigit && time.stores > 0;
}

bool ToDayFraction(const TypedTime& time, double& fraction) {
    const unsigned int hour = time.fields[0], minute = time.fields[1], second = time.fields[2];
    if (hour > 23 || minute > 59 || second > 59) return false;
    unsigned int milliseconds = 0;
    if (time.stores == 3) {
        if (time.fractionDigits == 0 || time.fields[3] > 999) return false;
        unsigned int scale = 1000;
        for (int digit = 0; digit < time.fractionDigits; ++digit) scale /= 10;
        milliseconds = scale * time.fields[3];
    }
    fraction = milliseconds / 8.64e7 + second / 86400.0 + minute / 1440.0 + hour / 24.0;
    return true;
}

}  // namespace

int AsciiToDateTime(const char* text, double* out, int format) {
    if (text == nullptr) return 0;
    const FieldOrder order = OrderOf(format);
    TypedDate typed;
    CalendarDate date{};
    if (!ReadDateFields(text, order, typed) || !ToCalendarDate(typed, order, date)) return 0;
    double fraction = 0.0;
    if (typed.timePart != nullptr) {
        TypedTime time;
        if (!ReadTimeFields(typed.timePart, time) || !ToDayFraction(time, fraction)) return 0;
    }
    *out = DateDay0(date.day, date.month, date.year) + fraction;
    return 1;
}
