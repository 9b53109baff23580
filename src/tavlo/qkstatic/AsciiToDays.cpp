#include <array>
#include <cstdint>

#include "tavlo/qkstatic/TextToValue.h"
#include "tavlo/qkstatic/TimeTextCharacters.h"

namespace {

using namespace internal;

constexpr int kGroupsMax = 4;
constexpr int kFractionState = 5;

// wCommandTable and wStateTable side by side: {command, next state}; a
// store moves on to the next group.
// clang-format off
constexpr Step kStateTable[7][4] = {
    //        space  digit   ':'    '.'
    /* 0 */ {go(0), acc(1), st(2), go(5)},
    /* 1 */ {go(6), acc(1), st(2), go(5)},
    /* 2 */ {go(6), acc(2), st(3), go(5)},
    /* 3 */ {go(6), acc(3), st(4), go(5)},
    /* 4 */ {go(6), acc(4), X,     go(5)},
    /* 5 */ {go(6), fr(5),  X,     X},
    /* 6 */ {go(6), X,      X,     X},
};
// clang-format on

struct Limit {
    double divisor;
    double bound;  // 0: unbounded
};
// By number of colons: the unit and upper bound of each group, first to last.
constexpr Limit kUnits[kGroupsMax][kGroupsMax] = {
    {{86400.0, 0.0}},
    {{1440.0, 0.0}, {86400.0, 60.0}},
    {{24.0, 0.0}, {1440.0, 60.0}, {86400.0, 60.0}},
    {{1.0, 0.0}, {24.0, 24.0}, {1440.0, 60.0}, {86400.0, 60.0}},
};

}  // namespace

int AsciiToDays(const char* text, double* out) {
    if (text == nullptr) return 0;
    std::array<double, kGroupsMax> groups{};
    int group = 0, state = 0;
    double scale = 1.0;
    bool anyDigit = false;
    for (const char* p = text; *p != '\0'; ++p) {
        const TimeClass timeClass = ClassOf(*p);
        if (timeClass == Invalid) return 0;
        const Step step = kStateTable[state][timeClass];
        const int digit = *p - '0';
        switch (step.command) {
            case Command::None: break;
            case Command::Accumulate:
                groups[group] = groups[group] * 10.0 + digit;
                anyDigit = true;
                break;
            case Command::Store:
                if (++group == kGroupsMax) return 0;
                break;
            case Command::Fraction:
                scale /= 10.0;
                groups[group] += digit * scale;
                anyDigit = true;
                break;
            case Command::Fail: return 0;
        }
        state = step.next;
    }
    if (!anyDigit) {
        if (group > 0 || state == kFractionState) return 0;
        *out = 0.0;
        return 1;
    }
    double days = 0.0;
    for (int i = 0; i <= group; ++i) {
        const Limit& limit = kUnits[group][i];
        if (limit.bound != 0.0 && groups[i] >= limit.bound) return 0;
        days += groups[i] / limit.divisor;
    }
    *out = days;
    return 1;
}
