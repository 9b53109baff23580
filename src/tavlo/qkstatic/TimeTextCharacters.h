// Character classes shared by the elapsed-time and clock-time recognisers,
// and the checked 16-bit digit accumulation of date and time fields
// (OutOfRange for a longer run). Internal to the recognisers.
#pragma once

#include <cstdint>

#include "zo/kel/NumericCast.h"

namespace time_text {

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

inline std::uint16_t WithDigit(std::uint16_t field, char digit) {
    return zo::kel::NumericCast<std::uint16_t>(field * 10u + static_cast<unsigned int>(digit - '0'));
}

}  // namespace time_text
