// A 32-bit counter whose every operation is atomic, lock-free and
// sequentially consistent: the reference count of shared buffers and payload
// objects. increment()/decrement() return the new value. While the process
// has only one thread they skip the bus lock, as the standard library's
// shared pointers do: no other thread can observe the difference.
#pragma once

#include <sys/single_threaded.h>

#include <atomic>

#include "qkdynam_platform.h"

namespace zo::kel::osdep {

class AtomicInt {
public:
    explicit AtomicInt(int value = 0) noexcept : value_(value) {}
    AtomicInt(const AtomicInt&) = delete;
    AtomicInt& operator=(const AtomicInt&) = delete;

    int increment() noexcept { return add(1); }
    int decrement() noexcept { return add(-1); }

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
    int add(int delta) noexcept {
        if (__libc_single_threaded) {
            const int result = value_.load(std::memory_order_relaxed) + delta;
            value_.store(result, std::memory_order_relaxed);
            return result;
        }
        return value_.fetch_add(delta) + delta;
    }

    static_assert(std::atomic<int>::is_always_lock_free);
    std::atomic<int> value_;
};

}  // namespace zo::kel::osdep
