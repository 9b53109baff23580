#include <array>
#include <cstdint>

#include "tavlo/qkstatic/TextToValue.h"
#include "zo/kel/NumericCast.h"

namespace {

enum CharacterClass : std::uint8_t { Space, Zero, Digit, Sign, Point, Exponent, HexMark, HexLetter, Invalid };
enum class Action : std::uint8_t { None, Sign, Integer, Fraction, ExponentSign, ExponentDigit, HexDigit, Fail };

struct Step {
    Action action;
    std::uint8_t next;
};

constexpr int kClassCount = 8;
constexpr int kStateCount = 12;
// Final states 0, 1, 4, 6, 7 and 10 reject.
constexpr unsigned int kRejectingStates = 0x4D3;

constexpr Step X = {Action::Fail, 0};
constexpr Step go(int next) { return {Action::None, static_cast<std::uint8_t>(next)}; }
constexpr Step in(int next) { return {Action::Integer, static_cast<std::uint8_t>(next)}; }
constexpr Step fr(int next) { return {Action::Fraction, static_cast<std::uint8_t>(next)}; }
constexpr Step sg(int next) { return {Action::Sign, static_cast<std::uint8_t>(next)}; }
constexpr Step es(int next) { return {Action::ExponentSign, static_cast<std::uint8_t>(next)}; }
constexpr Step ex(int next) { return {Action::ExponentDigit, static_cast<std::uint8_t>(next)}; }
constexpr Step hx(int next) { return {Action::HexDigit, static_cast<std::uint8_t>(next)}; }

// clang-format off
constexpr Step kStateTable[kStateCount][kClassCount] = {
    //        space   zero    digit   sign    point   exponent hex mark hex letter
    /* 0 */ {go(0),  go(2),  in(3),  sg(1),  go(4),  X,       X,       X},
    /* 1 */ {X,      go(3),  in(3),  X,      go(4),  X,       X,       X},
    /* 2 */ {X,      go(2),  in(3),  X,      go(4),  go(6),   go(10),  X},
    /* 3 */ {go(9),  in(3),  in(3),  X,      go(5),  go(6),   X,       X},
    /* 4 */ {X,      fr(5),  fr(5),  X,      X,      X,       X,       X},
    /* 5 */ {go(9),  fr(5),  fr(5),  X,      X,      go(6),   X,       X},
    /* 6 */ {X,      go(8),  ex(8),  es(7),  X,      X,       X,       X},
    /* 7 */ {go(9),  go(8),  ex(8),  X,      X,      X,       X,       X},
    /* 8 */ {go(9),  ex(8),  ex(8),  X,      X,      X,       X,       X},
    /* 9 */ {go(9),  X,      X,      X,      X,      X,       X,       X},
    /* 10 */{X,      go(11), hx(11), X,      X,      hx(11),  X,       X},
    /* 11 */{X,      hx(11), hx(11), X,      X,      hx(11),  X,       hx(11)},
};
// clang-format on

constexpr std::array<CharacterClass, 256> MakeClassTable() {
    std::array<CharacterClass, 256> table{};
    table.fill(Invalid);
    table[' '] = Space;
    table['0'] = Zero;
    for (char c = '1'; c <= '9'; ++c) table[static_cast<unsigned char>(c)] = Digit;
    table['+'] = table['-'] = Sign;
    table['.'] = Point;
    table['E'] = table['e'] = Exponent;
    table['x'] = table['X'] = HexMark;
    for (char c : {'A', 'B', 'C', 'D', 'F', 'a', 'b', 'c', 'd', 'f'}) table[static_cast<unsigned char>(c)] = HexLetter;
    return table;
}

// Value of a decimal or hexadecimal digit, either case.
constexpr std::array<std::uint8_t, 256> MakeDigitValues() {
    std::array<std::uint8_t, 256> values{};
    for (int c = '0'; c <= '9'; ++c) values[c] = static_cast<std::uint8_t>(c - '0');
    for (int c = 'A'; c <= 'F'; ++c) values[c] = values[c + ('a' - 'A')] = static_cast<std::uint8_t>(c - 'A' + 10);
    return values;
}

constexpr std::array<CharacterClass, 256> kClassOf = MakeClassTable();
constexpr std::array<std::uint8_t, 256> kDigitValue = MakeDigitValues();

// value × 10^exponent by repeated squaring of 10 (or 0.1), lowest bit first.
double ScaledByPowerOfTen(double value, unsigned int exponent, bool negative) noexcept {
    double factor = negative ? 0.1 : 10.0;
    for (; exponent != 0; exponent >>= 1) {
        if (exponent & 1) value *= factor;
        factor *= factor;
    }
    return value;
}

}  // namespace

int AsciiToNumber(const char* text, double* out) {
    if (text == nullptr) return 0;
    double value = 0.0, scale = 1.0;
    unsigned int exponent = 0;
    bool negative = false, negativeExponent = false;
    int state = 0;
    for (const char* p = text; *p != '\0'; ++p) {
        const auto c = static_cast<unsigned char>(*p);
        const CharacterClass characterClass = kClassOf[c];
        if (characterClass == Invalid) return 0;
        const Step step = kStateTable[state][characterClass];
        switch (step.action) {
            case Action::None: break;
            case Action::Sign: negative = c == '-'; break;
            case Action::Integer: value = value * 10.0 + kDigitValue[c]; break;
            case Action::Fraction:
                scale /= 10.0;
                value += kDigitValue[c] * scale;
                break;
            case Action::ExponentSign: negativeExponent = c == '-'; break;
            case Action::ExponentDigit:
                exponent = zo::kel::NumericCast<std::uint16_t>(exponent * 10u + kDigitValue[c]);
                break;
            case Action::HexDigit: value = value * 16.0 + kDigitValue[c]; break;
            case Action::Fail: return 0;
        }
        state = step.next;
    }
    if ((kRejectingStates >> state) & 1u) return 0;
    value = ScaledByPowerOfTen(value, exponent, negativeExponent);
    *out = negative ? -value : value;
    return 1;
}
