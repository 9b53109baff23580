// What the elapsed-time and clock-time recognisers share: their character
// classes, the commands and steps of their state tables, and the checked
// 16-bit digit accumulation of date and time fields (OutOfRange for a longer
// run). Internal to the recognisers.
#pragma once

#include <cstdint>

#include "zo/kel/NumericCast.h"

namespace internal {

enum TimeClass : std::uint8_t { Space, Digit, Colon, Point, Invalid };

constexpr bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr TimeClass ClassOf(char c) noexcept {
    if (IsDigit(c)) return Digit;
    switch (c) {
        case ' ': return Space;
        case ':': return Colon;
        case '.': return Point;
        default: return Invalid;
    }
}

// Store closes the current field and moves to the next (':' and '.').
enum class Command : std::uint8_t { None, Accumulate, Store, Fraction, Fail };

// One cell of a state table: a command and the next state.
struct Step {
    Command command;
    std::uint8_t next;
};
constexpr Step X = {Command::Fail, 0};
constexpr Step go(int next) { return {Command::None, static_cast<std::uint8_t>(next)}; }
constexpr Step acc(int next) { return {Command::Accumulate, static_cast<std::uint8_t>(next)}; }
constexpr Step st(int next) { return {Command::Store, static_cast<std::uint8_t>(next)}; }
constexpr Step fr(int next) { return {Command::Fraction, static_cast<std::uint8_t>(next)}; }

inline std::uint16_t WithDigit(std::uint16_t field, char digit) {
    return zo::kel::NumericCast<std::uint16_t>(field * 10u + static_cast<unsigned int>(digit - '0'));
}

}  // namespace internal
