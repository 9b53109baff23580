// Narrowing conversions that throw OutOfRange (stamped with this header)
// instead of truncating: NumericCast<unsigned int>(pointerDifference).
#pragma once

#include <cmath>
#include <concepts>
#include <limits>
#include <utility>

#include "zo/kel/Exception.h"
#include "zo/kel/SafeInteger.h"

namespace zo::kel {

template <std::integral To, std::integral From>
constexpr To NumericCast(From value) {
    if (!std::in_range<To>(value)) ZO_THROW(exception::OutOfRange);
    return static_cast<To>(value);
}

template <std::integral To, std::unsigned_integral From>
constexpr To NumericCast(SafeInteger<From> value) {
    return NumericCast<To>(value.get());
}

// A floating value converts when it is a number whose integral part fits.
template <std::integral To, std::floating_point From>
constexpr To NumericCast(From value) {
    // min() and max() + 1 are powers of two (or zero) and so exact in any
    // floating type; min() - 1 is not always, hence the test on the integral part.
    constexpr auto kLowest = static_cast<From>(std::numeric_limits<To>::min());
    constexpr auto kPastHighest = (static_cast<From>(std::numeric_limits<To>::max() / 2 + 1)) * From(2);
    const From integralPart = std::trunc(value);
    if (!(integralPart >= kLowest && integralPart < kPastHighest)) ZO_THROW(exception::OutOfRange);
    return static_cast<To>(integralPart);
}

}  // namespace zo::kel
