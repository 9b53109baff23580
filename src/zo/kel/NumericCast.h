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
    constexpr auto kLowest = static_cast<From>(std::numeric_limits<To>::min());
    // max() + 1 is a power of two and so exact in any floating type.
    constexpr auto kPastHighest = (static_cast<From>(std::numeric_limits<To>::max() / 2 + 1)) * From(2);
    if (!(value > kLowest - From(1) && value < kPastHighest)) ZO_THROW(exception::OutOfRange);
    return static_cast<To>(value);
}

}  // namespace zo::kel
