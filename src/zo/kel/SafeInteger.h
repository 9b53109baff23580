// Checked unsigned arithmetic: every length and count of the library passes
// through SafeInteger, whose operations throw OutOfRange (stamped with this
// header and the line of the check) instead of wrapping.
#pragma once

#include <compare>
#include <concepts>
#include <utility>

#include "zo/kel/Exception.h"

namespace zo::kel {

template <std::unsigned_integral T>
class SafeInteger {
public:
    constexpr SafeInteger() noexcept = default;
    constexpr SafeInteger(T value) noexcept : value_(value) {}

    // Any other integer is accepted when it fits; a negative or too large
    // value throws OutOfRange.
    template <std::integral U>
        requires(!std::same_as<U, T>)
    constexpr SafeInteger(U value) : value_(static_cast<T>(value)) {
        if (!std::in_range<T>(value)) ZO_THROW(exception::OutOfRange);
    }

    constexpr T get() const noexcept { return value_; }
    constexpr explicit operator T() const noexcept { return value_; }

    friend constexpr SafeInteger operator+(SafeInteger a, SafeInteger b) {
        T sum;
        if (__builtin_add_overflow(a.value_, b.value_, &sum)) ZO_THROW(exception::OutOfRange);
        return sum;
    }
    friend constexpr SafeInteger operator-(SafeInteger a, SafeInteger b) {
        T difference;
        if (__builtin_sub_overflow(a.value_, b.value_, &difference)) ZO_THROW(exception::OutOfRange);
        return difference;
    }
    friend constexpr SafeInteger operator*(SafeInteger a, SafeInteger b) {
        T product;
        if (__builtin_mul_overflow(a.value_, b.value_, &product)) ZO_THROW(exception::OutOfRange);
        return product;
    }
    friend constexpr SafeInteger operator/(SafeInteger a, SafeInteger b) {
        if (b.value_ == 0) ZO_THROW(exception::OutOfRange);
        return static_cast<T>(a.value_ / b.value_);
    }
    friend constexpr SafeInteger operator%(SafeInteger a, SafeInteger b) {
        if (b.value_ == 0) ZO_THROW(exception::OutOfRange);
        return static_cast<T>(a.value_ % b.value_);
    }

    constexpr SafeInteger& operator+=(SafeInteger other) { return *this = *this + other; }
    constexpr SafeInteger& operator-=(SafeInteger other) { return *this = *this - other; }
    constexpr SafeInteger& operator*=(SafeInteger other) { return *this = *this * other; }
    constexpr SafeInteger& operator/=(SafeInteger other) { return *this = *this / other; }
    constexpr SafeInteger& operator++() { return *this += 1u; }
    constexpr SafeInteger& operator--() { return *this -= 1u; }

    friend constexpr bool operator==(SafeInteger, SafeInteger) noexcept = default;
    friend constexpr auto operator<=>(SafeInteger, SafeInteger) noexcept = default;

private:
    T value_ = 0;
};

}  // namespace zo::kel
