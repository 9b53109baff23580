// A thread whose body is the subclass's proc(). start() runs it on a new
// thread with every signal blocked (signals belong to the application's own
// threads); waitForThreadToTerminate() waits for proc() to return and may be
// called from proc() itself. The destructor does not stop a running thread:
// wait for it before the object goes away.
#pragma once

#include <pthread.h>

#include <array>
#include <cstdint>
#include <optional>

#include "qkdynam_platform.h"
#include "zo/kel/osdep/CriticalSection.h"

namespace zo::kel::osdep {

class QKDYNAM_API Thread {
public:
    static constexpr int kPriorityLevels = 9;  // levels 0 (lowest) to 8 (highest)

    Thread();
    virtual ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Starts proc() on a new thread, named `name` (may be null) in debuggers.
    // A non-zero stack size is raised by the guard size. Throws PosixError.
    void start(const char* name, unsigned int stackSize);
    void start(unsigned int stackSize = 0) { start(nullptr, stackSize); }
    void waitForThreadToTerminate();
    bool isCurrentThread() const noexcept;
    static void yield() noexcept;

    // Library priority levels map to native ones; a level of 9 or more
    // throws InvalidArgument.
    void setPriorityMapped(unsigned int level);
    unsigned int getPriorityMapped() const;
    // Native values carry the scheduling policy in the high 16 bits and the
    // priority in the low 16 bits, as the priority map does.
    void setPriorityNative(int policyAndPriority);
    int getPriorityNative() const;
    // Sets the priority within the thread's current policy.
    void setPriority(int priority);
    // The native value of each level, built at construction.
    const std::array<int, kPriorityLevels>& priorityMap() const noexcept { return priorityMap_; }

    // Releases what start() left behind: a thread that was never joined is
    // detached so that its resources go when it ends.
    void cleanup();

protected:
    virtual std::uint32_t proc() = 0;

private:
    friend struct ThreadStart;
    void populatePriorityMap(std::optional<int> defaultPriority);  // unknown: the policy's minimum

    pthread_t handle_{};         // written by the new thread itself, see start()
    bool joined_ = false;
    CriticalSection runLock_;    // held by the running body
    CriticalSection stateLock_;  // guards joined_ between waiters
    int policy_ = SCHED_OTHER;
    std::array<int, kPriorityLevels> priorityMap_{};
    bool started_ = false;
};

// Names `thread` in debuggers (at most 15 characters are kept).
QKDYNAM_API void ThreadSetDebugName(pthread_t thread, const char* name) noexcept;

namespace internal {

// The native priority of each level for a policy whose priorities run from
// `min` to `max` and whose threads start at `def` (absent: `min`; outside the
// bounds: their midpoint). Levels 0-1 are `min`, 4 is `def`, 7-8 are `max`;
// 2-3 and 5-6 step between them, or stay at the bound when there is no room.
constexpr std::array<int, Thread::kPriorityLevels> PriorityLevels(int min, int max, std::optional<int> def) noexcept {
    int start = def.value_or(min);
    if (start < min || start > max) start = (min + max) / 2;
    const bool roomBelow = start - min >= 2;
    const bool roomAbove = max - start >= 2;
    return {
        min,
        min,
        roomBelow ? (start + min) / 2 : min,
        roomBelow ? start - 1 : min,
        start,
        roomAbove ? start + 1 : max,
        roomAbove ? (max + start + 1) / 2 : max,
        max,
        max,
    };
}

// The first level whose priority is at least `priority`; the highest level
// when none is.
constexpr unsigned int LevelOfPriority(const std::array<int, Thread::kPriorityLevels>& priorities,
                                       int priority) noexcept {
    for (unsigned int level = 0; level < priorities.size(); ++level) {
        if (priorities[level] >= priority) return level;
    }
    return Thread::kPriorityLevels - 1;
}

}  // namespace internal

}  // namespace zo::kel::osdep
