// A 32-bit counter whose every operation is atomic, lock-free and
// sequentially consistent: the reference count of shared buffers and payload
// objects. increment()/decrement() return the new value.
#pragma once

#include <atomic>

#include "qkdynam_platform.h"

namespace zo::kel::osdep {

class AtomicInt {
public:
    explicit AtomicInt(int value = 0) noexcept : value_(value) {}
    AtomicInt(const AtomicInt&) = delete;
    AtomicInt& operator=(const AtomicInt&) = delete;

    int increment() noexcept { return value_.fetch_add(1) + 1; }
    int decrement() noexcept { return value_.fetch_sub(1) - 1; }

    int value() const noexcept { return value_.load(); }
    operator int() const noexcept { return value_.load(); }
    // Stores `value` and returns the previous value.
    int exchange(int value) noexcept { return value_.exchange(value); }
    // Stores `desired` when the value equals `expected`; returns the value
    // found, so the exchange happened when the result equals `expected`.
    int compareExchange(int desired, int expected) noexcept {
        value_.compare_exchange_strong(expected, desired);
        return expected;
    }

    bool operator==(int other) const noexcept { return value_.load() == other; }
    bool operator!=(int other) const noexcept { return value_.load() != other; }
    bool operator>(int other) const noexcept { return value_.load() > other; }
    bool operator>=(int other) const noexcept { return value_.load() >= other; }

private:
    static_assert(std::atomic<int>::is_always_lock_free);
    std::atomic<int> value_;
};

}  // namespace zo::kel::osdep
