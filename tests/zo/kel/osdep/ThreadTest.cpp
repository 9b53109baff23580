#include "zo/kel/osdep/Thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "zo/kel/Exception.h"
#include "zo/kel/osdep/Event.h"
#include "zo/kel/osdep/OSException.h"

namespace {

using zo::kel::osdep::Event;
using zo::kel::osdep::Thread;
using zo::kel::osdep::internal::LevelOfPriority;
using zo::kel::osdep::internal::PriorityLevels;

constexpr unsigned int kPatienceMs = 10000;

class FunctionThread : public Thread {
public:
    explicit FunctionThread(std::function<std::uint32_t(FunctionThread&)> body) : body_(std::move(body)) {}
    ~FunctionThread() override { waitForThreadToTerminate(); }

protected:
    std::uint32_t proc() override { return body_(*this); }

private:
    std::function<std::uint32_t(FunctionThread&)> body_;
};

TEST(Thread, RunsBodyNamedWithSignalsBlocked) {
    std::string name;
    bool allSignalsBlocked = false;
    bool isCurrent = false;
    FunctionThread thread([&](FunctionThread& self) -> std::uint32_t {
        char buffer[32] = {};
        pthread_getname_np(pthread_self(), buffer, sizeof buffer);
        name = buffer;
        sigset_t mask;
        pthread_sigmask(SIG_BLOCK, nullptr, &mask);
        allSignalsBlocked = sigismember(&mask, SIGINT) == 1 && sigismember(&mask, SIGTERM) == 1 &&
                            sigismember(&mask, SIGUSR1) == 1;
        isCurrent = self.isCurrentThread();
        return 7;
    });
    thread.start("qk-worker-with-a-long-name", 256 * 1024);
    thread.waitForThreadToTerminate();
    EXPECT_EQ(name, "qk-worker-with-");  // the kernel keeps 15 characters
    EXPECT_TRUE(allSignalsBlocked);
    EXPECT_TRUE(isCurrent);
    EXPECT_FALSE(thread.isCurrentThread());
}

TEST(Thread, WaitReturnsOnlyAfterBodyFinished) {
    Event release(true, false);
    std::atomic<bool> finished{false};
    FunctionThread thread([&](FunctionThread&) -> std::uint32_t {
        release.wait(kPatienceMs);
        finished = true;
        return 0;
    });
    thread.start();
    release.set();
    thread.waitForThreadToTerminate();
    EXPECT_TRUE(finished);
    thread.waitForThreadToTerminate();  // a second wait is harmless
}

TEST(Thread, WaitingFromInsideBodyNeitherDeadlocksNorJoins) {
    std::atomic<bool> returnedInside{false};
    FunctionThread thread([&](FunctionThread& self) -> std::uint32_t {
        self.waitForThreadToTerminate();
        returnedInside = true;
        return 0;
    });
    thread.start();
    thread.waitForThreadToTerminate();
    EXPECT_TRUE(returnedInside);
}

using Levels = std::array<int, Thread::kPriorityLevels>;

// Policies differ in their bounds: 0..0 for SCHED_OTHER, 1..99 for the
// real-time ones, -20..19 like nice values.
TEST(Thread, PriorityLevelsSpreadOverThePolicyBounds) {
    const struct {
        int min, max;
        std::optional<int> start;
        Levels expected;
    } rows[] = {
        {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {1, 99, std::nullopt, {1, 1, 1, 1, 1, 2, 50, 99, 99}},  // no default: the minimum
        {1, 99, 50, {1, 1, 25, 49, 50, 51, 75, 99, 99}},
        {-20, 19, 0, {-20, -20, -10, -1, 0, 1, 10, 19, 19}},
        {-20, 19, 40, {-20, -20, -10, -1, 0, 1, 10, 19, 19}},  // out of bounds: the midpoint
        {1, 99, 0, {1, 1, 25, 49, 50, 51, 75, 99, 99}},
        {10, 13, 11, {10, 10, 10, 10, 11, 12, 12, 13, 13}},     // no room below
        {1, 2, 2, {1, 1, 1, 1, 2, 2, 2, 2, 2}},                 // no room either side
    };
    for (const auto& row : rows) {
        EXPECT_EQ(PriorityLevels(row.min, row.max, row.start), row.expected) << row.min << ".." << row.max;
    }
    // Over many bounds and defaults: ordered, within the bounds, the bounds at
    // both ends and the default in the middle.
    for (int min = -20; min <= 5; ++min) {
        for (int max = min; max <= min + 40; ++max) {
            for (int start = min; start <= max; ++start) {
                const Levels levels = PriorityLevels(min, max, start);
                ASSERT_TRUE(std::ranges::is_sorted(levels)) << min << ".." << max << " from " << start;
                ASSERT_EQ(std::tuple(levels[0], levels[4], levels[8]), std::tuple(min, start, max))
                    << min << ".." << max << " from " << start;
            }
        }
    }
}

TEST(Thread, LevelOfAPriorityIsTheFirstLevelReachingIt) {
    const Levels levels = PriorityLevels(1, 99, 50);  // 1 1 25 49 50 51 75 99 99
    const std::pair<int, unsigned int> rows[] = {{0, 0},  {1, 0},  {2, 2},  {25, 2}, {26, 3},
                                                 {50, 4}, {51, 5}, {99, 7}, {100, 8}};
    for (const auto& [priority, level] : rows) EXPECT_EQ(LevelOfPriority(levels, priority), level) << priority;
}

TEST(Thread, MappedLevelsSetTheNativePriority) {
    Event release(true, false);
    FunctionThread thread([&](FunctionThread&) -> std::uint32_t {
        release.wait(kPatienceMs);
        return 0;
    });
    // Every level carries the policy of new threads and the level's priority
    // for that policy's bounds.
    const auto& map = thread.priorityMap();
    const int policy = map[0] >> 16;
    Levels priorities{};
    for (int level = 0; level < Thread::kPriorityLevels; ++level) {
        EXPECT_EQ(map[level] >> 16, policy) << level;
        priorities[level] = static_cast<std::int16_t>(map[level] & 0xFFFF);
    }
    EXPECT_EQ(priorities, PriorityLevels(sched_get_priority_min(policy), sched_get_priority_max(policy), priorities[4]));

    thread.start();
    thread.setPriorityMapped(4);
    EXPECT_EQ(thread.getPriorityNative(), map[4]);
    EXPECT_EQ(thread.getPriorityMapped(), LevelOfPriority(priorities, priorities[4]));
    try {
        thread.setPriorityMapped(9);
        ADD_FAILURE() << "level 9 accepted";
    } catch (const zo::kel::exception::InvalidArgument& error) {
        EXPECT_STREQ(error.getFile(), "zo/kel/osdep/Thread");
    }
    release.set();
}

TEST(Thread, StartFailureThrowsPosixError) {
    FunctionThread thread([](FunctionThread&) -> std::uint32_t { return 0; });
    // A stack below the system minimum is refused.
    EXPECT_THROW(thread.start(1), zo::kel::osdep::PosixError);
}

}  // namespace
