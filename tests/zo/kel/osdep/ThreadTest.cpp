#include "zo/kel/osdep/Thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>

#include "zo/kel/Exception.h"
#include "zo/kel/osdep/Event.h"
#include "zo/kel/osdep/OSException.h"

namespace {

using zo::kel::osdep::Event;
using zo::kel::osdep::Thread;

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

TEST(Thread, PriorityMapIsOrderedAndLevelsAreChecked) {
    FunctionThread probe([](FunctionThread&) -> std::uint32_t { return 0; });
    const auto& map = probe.priorityMap();
    for (int level = 1; level < Thread::kPriorityLevels; ++level) {
        EXPECT_LE(static_cast<std::int16_t>(map[level - 1] & 0xFFFF), static_cast<std::int16_t>(map[level] & 0xFFFF));
        EXPECT_EQ(map[level] >> 16, map[0] >> 16) << "one policy for every level";
    }

    Event release(true, false);
    FunctionThread thread([&](FunctionThread&) -> std::uint32_t {
        release.wait(kPatienceMs);
        return 0;
    });
    thread.start();
    thread.setPriorityMapped(4);
    EXPECT_EQ(thread.getPriorityNative(), map[4]);
    // The level read back is at most 4 and has level 4's native priority.
    const unsigned int level = thread.getPriorityMapped();
    EXPECT_LE(level, 4u);
    EXPECT_EQ(static_cast<std::int16_t>(map[std::min(level, 4u)] & 0xFFFF), static_cast<std::int16_t>(map[4] & 0xFFFF));
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
