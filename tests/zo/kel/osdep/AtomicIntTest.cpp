#include "zo/kel/osdep/AtomicInt.h"

#include <gtest/gtest.h>

#include <thread>
#include <tuple>
#include <vector>

namespace {

using zo::kel::osdep::AtomicInt;

TEST(AtomicInt, OperationsReturnTheNewOrPreviousValue) {
    AtomicInt count(1);
    EXPECT_EQ(count.increment(), 2);
    EXPECT_EQ(count.decrement(), 1);
    EXPECT_EQ(count.decrement(), 0);
    EXPECT_EQ(count.exchange(7), 0);
    EXPECT_EQ(count.compareExchange(9, 3), 7);  // not 3: unchanged
    EXPECT_EQ(count.value(), 7);
    EXPECT_EQ(count.compareExchange(9, 7), 7);  // swapped
    // ==, !=, >, >= against 9 and 8, each on both sides of its boundary.
    EXPECT_EQ(std::tuple(count == 9, count == 8, count != 8, count != 9, count > 8, count > 9, count >= 9, count >= 10),
              std::tuple(true, false, true, false, true, false, true, false));
}

// Every thread counts the same way, so a lost update shows in the total
// (counts in opposite directions could cancel out).
TEST(AtomicInt, CountsExactlyUnderContention) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 100000;
    const struct {
        const char* name;
        int (AtomicInt::*step)();
        int expected;
    } directions[] = {
        {"increment", &AtomicInt::increment, kThreads * kRounds},
        {"decrement", &AtomicInt::decrement, -kThreads * kRounds},
    };
    for (const auto& direction : directions) {
        AtomicInt count(0);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < kRounds; ++i) (count.*direction.step)();
            });
        }
        for (auto& thread : threads) thread.join();
        EXPECT_EQ(count.value(), direction.expected) << direction.name;
    }
}

}  // namespace
