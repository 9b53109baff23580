#include "zo/kel/osdep/Event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

using zo::kel::osdep::Event;

constexpr unsigned int kPatienceMs = 10000;

// Polls `condition` until it holds or the patience runs out.
template <class Condition>
bool Eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

TEST(Event, CheckClearsOnlyAutomaticReset) {
    Event automatic(false, true);
    EXPECT_TRUE(automatic.checkOnly());
    EXPECT_TRUE(automatic.check());
    EXPECT_FALSE(automatic.check());
    automatic.set();
    automatic.resetIfAuto();
    EXPECT_FALSE(automatic.checkOnly());

    Event manual(true, true);
    EXPECT_TRUE(manual.check());
    EXPECT_TRUE(manual.check());
    manual.resetIfAuto();
    EXPECT_TRUE(manual.checkOnly());
    manual.reset();
    EXPECT_FALSE(manual.checkOnly());
}

TEST(Event, TimedWaits) {
    Event event(false, false);
    EXPECT_FALSE(event.wait(0));  // returns at once
    const auto before = std::chrono::steady_clock::now();
    EXPECT_FALSE(event.wait(30));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(30));
    event.set();
    EXPECT_TRUE(event.wait(0));
    EXPECT_FALSE(event.checkOnly());  // the timed wait consumed the signal
    event.set();
    EXPECT_TRUE(event.wait(Event::kInfinite));
}

TEST(Event, InfiniteWaitBlocksUntilSet) {
    Event event(false, false);
    std::atomic<bool> released{false};
    std::thread waiter([&] {
        event.wait(Event::kInfinite);
        released = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(released);
    event.set();
    waiter.join();
    EXPECT_TRUE(released);
}

// Two waiters: an automatic-reset event releases one per set(), a manual-reset
// event releases both and stays signalled.
TEST(Event, AutomaticReleasesOneWaiterManualReleasesAll) {
    for (const bool manual : {false, true}) {
        Event event(manual, false);
        std::atomic<int> released{0};
        std::vector<std::thread> waiters;
        for (int i = 0; i < 2; ++i) {
            waiters.emplace_back([&] {
                if (event.wait(kPatienceMs)) ++released;
            });
        }
        event.set();
        ASSERT_TRUE(Eventually([&] { return released >= 1; }));
        if (manual) {
            EXPECT_TRUE(Eventually([&] { return released == 2; }));
            EXPECT_TRUE(event.checkOnly());
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            EXPECT_EQ(released, 1);
            EXPECT_FALSE(event.checkOnly());
            event.set();
            EXPECT_TRUE(Eventually([&] { return released == 2; }));
        }
        for (auto& waiter : waiters) waiter.join();
    }
}

// Ping-pong over two automatic-reset events: a single lost wake-up stalls
// the exchange and shows as a timed-out wait.
TEST(Event, NoLostWakeUps) {
    Event ping(false, false), pong(false, false);
    constexpr int kRounds = 20000;
    std::atomic<int> failures{0};
    std::thread partner([&] {
        for (int i = 0; i < kRounds; ++i) {
            if (!ping.wait(kPatienceMs)) {
                ++failures;
                return;
            }
            pong.set();
        }
    });
    for (int i = 0; i < kRounds && failures == 0; ++i) {
        ping.set();
        if (!pong.wait(kPatienceMs)) ++failures;
    }
    partner.join();
    EXPECT_EQ(failures, 0);
}

}  // namespace
