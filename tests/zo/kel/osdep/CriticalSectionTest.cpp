#include "zo/kel/osdep/CriticalSection.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "zo/kel/osdep/Event.h"

namespace {

using zo::kel::osdep::CriticalSection;
using zo::kel::osdep::Event;

constexpr unsigned int kPatienceMs = 10000;

TEST(CriticalSection, RecursionNeedsAsManyLeaves) {
    CriticalSection section;
    EXPECT_FALSE(section.inOwningThread());
    section.enter();
    section.enter();
    section.leave();
    EXPECT_TRUE(section.inOwningThread());
    section.leave();
    EXPECT_FALSE(section.inOwningThread());
    // A surplus leave is ignored: the section is free and enterable again.
    section.leave();
    EXPECT_TRUE(section.tryEnter());
    section.leave();
}

TEST(CriticalSection, ForeignLeaveDoesNotUnlock) {
    CriticalSection section;
    section.enter();
    std::thread([&] {
        EXPECT_FALSE(section.inOwningThread());
        section.leave();  // not the owner: must do nothing
        EXPECT_FALSE(section.tryEnter());
    }).join();
    EXPECT_TRUE(section.inOwningThread());
    section.leave();
    std::thread([&] {
        EXPECT_TRUE(section.tryEnter());
        EXPECT_TRUE(section.inOwningThread());
        section.leave();
    }).join();
}

TEST(CriticalSection, ExcludesOtherThreads) {
    CriticalSection section;
    Event entered(true, false), release(true, false);
    std::atomic<bool> secondInside{false};
    std::thread holder([&] {
        section.enter();
        entered.set();
        release.wait(kPatienceMs);
        section.leave();
    });
    ASSERT_TRUE(entered.wait(kPatienceMs));
    std::thread contender([&] {
        section.enter();
        secondInside = true;
        section.leave();
    });
    EXPECT_FALSE(section.tryEnter());
    // Give the contender time to get in if exclusion were broken.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(secondInside);
    release.set();
    holder.join();
    contender.join();
    EXPECT_TRUE(secondInside);
}

}  // namespace
