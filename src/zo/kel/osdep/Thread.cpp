#include "zo/kel/osdep/Thread.h"

#include <pthread.h>
#include <sched.h>
#include <signal.h>

#include <cstring>
#include <limits>
#include <optional>
#include <string>

#include "zo/kel/Exception.h"
#include "zo/kel/osdep/Event.h"
#include "zo/kel/osdep/OSException.h"

namespace zo::kel::osdep {

namespace {

constexpr int EncodeNative(int policy, int priority) { return (policy << 16) | (priority & 0xFFFF); }
constexpr int NativePolicy(int native) { return native >> 16; }
constexpr int NativePriority(int native) { return static_cast<std::int16_t>(native & 0xFFFF); }

void ThrowIfFailed(int result) {
    if (result != 0) throw PosixError(result);
}

// Owns a pthread_attr_t for one start().
class ThreadAttributes {
public:
    ThreadAttributes() { ThrowIfFailed(pthread_attr_init(&attributes_)); }
    ~ThreadAttributes() { pthread_attr_destroy(&attributes_); }
    ThreadAttributes(const ThreadAttributes&) = delete;
    ThreadAttributes& operator=(const ThreadAttributes&) = delete;
    pthread_attr_t* get() { return &attributes_; }

private:
    pthread_attr_t attributes_;
};

void SetStackSize(pthread_attr_t* attributes, unsigned int stackSize) {
    std::size_t size = stackSize;
    if (size == 0) {
        if constexpr (IsOSDeterministic()) size = 256 * 1024;
        else return;
    }
    std::size_t guard = 0;
    if (pthread_attr_getguardsize(attributes, &guard) != 0) guard = 0;
    if (guard > std::numeric_limits<std::size_t>::max() - size) throw PosixError(EINVAL);
    ThrowIfFailed(pthread_attr_setstacksize(attributes, size + guard));
}

}  // namespace

// Handed to the new thread. The thread records its own handle and enters its
// run lock before it sets `running`, so that start() returns only when both
// are in place and no waiter can take the run lock first. After set() the
// thread touches the block no more: start() owns it and frees it.
struct ThreadStart {
    Thread* thread;
    std::string name;
    Event running{true, false};

    static void* Entry(void* argument) {
        auto* start = static_cast<ThreadStart*>(argument);
        Thread* thread = start->thread;
        if (!start->name.empty()) ThreadSetDebugName(pthread_self(), start->name.c_str());
        thread->handle_ = pthread_self();
        thread->runLock_.enter();
        start->running.set();
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);
        const std::uint32_t result = thread->proc();
        thread->runLock_.leave();
        return reinterpret_cast<void*>(static_cast<std::uintptr_t>(result));
    }
};

Thread::Thread() {
    // One look at the default attributes gives the policy and the priority.
    std::optional<int> defaultPriority;
    pthread_attr_t defaults;
    if (pthread_attr_init(&defaults) == 0) {
        pthread_attr_getschedpolicy(&defaults, &policy_);
        sched_param parameters{};
        if (pthread_attr_getschedparam(&defaults, &parameters) == 0) defaultPriority = parameters.sched_priority;
        pthread_attr_destroy(&defaults);
    }
    populatePriorityMap(defaultPriority);
}

Thread::~Thread() { cleanup(); }

void Thread::populatePriorityMap(std::optional<int> defaultPriority) {
    const std::array<int, kPriorityLevels> priorities =
        internal::PriorityLevels(sched_get_priority_min(policy_), sched_get_priority_max(policy_), defaultPriority);
    for (int level = 0; level < kPriorityLevels; ++level) priorityMap_[level] = EncodeNative(policy_, priorities[level]);
}

void Thread::start(const char* name, unsigned int stackSize) {
    started_ = true;
    joined_ = false;
    try {
        ThreadAttributes attributes;
        SetStackSize(attributes.get(), stackSize);
        ThreadStart block;
        block.thread = this;
        if (name) block.name = name;
        pthread_t created;
        ThrowIfFailed(pthread_create(&created, attributes.get(), &ThreadStart::Entry, &block));
        block.running.wait();
    } catch (...) {
        started_ = false;  // nothing runs, so there is nothing to wait for
        throw;
    }
}

void Thread::waitForThreadToTerminate() {
    if (!started_) return;
    runLock_.enter();
    stateLock_.enter();
    if (!joined_ && !isCurrentThread()) {
        pthread_join(handle_, nullptr);
        joined_ = true;
    }
    stateLock_.leave();
    runLock_.leave();
}

bool Thread::isCurrentThread() const noexcept { return started_ && pthread_equal(handle_, pthread_self()); }

void Thread::yield() noexcept { sched_yield(); }

void Thread::setPriorityMapped(unsigned int level) {
    if (level >= kPriorityLevels) ZO_THROW(exception::InvalidArgument);
    setPriorityNative(priorityMap_[level]);
}

unsigned int Thread::getPriorityMapped() const {
    std::array<int, kPriorityLevels> priorities{};
    for (int level = 0; level < kPriorityLevels; ++level) priorities[level] = NativePriority(priorityMap_[level]);
    return internal::LevelOfPriority(priorities, NativePriority(getPriorityNative()));
}

void Thread::setPriorityNative(int policyAndPriority) {
    sched_param parameters{};
    parameters.sched_priority = NativePriority(policyAndPriority);
    ThrowIfFailed(pthread_setschedparam(handle_, NativePolicy(policyAndPriority), &parameters));
}

int Thread::getPriorityNative() const {
    int policy = 0;
    sched_param parameters{};
    ThrowIfFailed(pthread_getschedparam(handle_, &policy, &parameters));
    return EncodeNative(policy, parameters.sched_priority);
}

void Thread::setPriority(int priority) {
    setPriorityNative(EncodeNative(NativePolicy(getPriorityNative()), priority));
}

void Thread::cleanup() {
    if (!started_) return;
    stateLock_.enter();
    if (!joined_) {
        pthread_detach(handle_);
        joined_ = true;
    }
    stateLock_.leave();
}

void ThreadSetDebugName(pthread_t thread, const char* name) noexcept {
    if (!name) return;
    char shortName[16];  // the kernel keeps 15 characters and a terminator
    std::strncpy(shortName, name, sizeof shortName - 1);
    shortName[sizeof shortName - 1] = '\0';
    pthread_setname_np(thread, shortName);
}

}  // namespace zo::kel::osdep
