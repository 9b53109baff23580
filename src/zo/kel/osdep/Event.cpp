#include "zo/kel/osdep/Event.h"

#include <pthread.h>
#include <time.h>

#include <cerrno>

#include "zo/kel/osdep/OSException.h"

namespace zo::kel::osdep {

struct Event::State {
    pthread_cond_t condition;
    pthread_mutex_t mutex;
    bool manualReset;
    bool signaled;

    // Holds the event's mutex for one scope.
    class Lock {
    public:
        explicit Lock(State& state) : mutex_(state.mutex) { pthread_mutex_lock(&mutex_); }
        ~Lock() { pthread_mutex_unlock(&mutex_); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        pthread_mutex_t& mutex_;
    };

    // Called with the mutex held, once the waiter has seen the signal.
    bool consumeSignal() {
        const bool was = signaled;
        if (!manualReset) signaled = false;
        return was;
    }
};

namespace {

// Deadlines run on the monotonic clock so that a change of the wall clock
// neither cuts a wait short nor stretches it.
timespec DeadlineAfter(unsigned int ms) {
    timespec deadline{};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += ms / 1000;
    deadline.tv_nsec += static_cast<long>(ms % 1000) * 1000000L;
    if (deadline.tv_nsec >= 1000000000L) {
        deadline.tv_sec += 1;
        deadline.tv_nsec -= 1000000000L;
    }
    return deadline;
}

}  // namespace

Event::Event(bool manualReset, bool initiallySignaled) : state_(std::make_unique<State>()) {
    state_->manualReset = manualReset;
    state_->signaled = initiallySignaled;
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    int result = pthread_cond_init(&state_->condition, &attributes);
    pthread_condattr_destroy(&attributes);
    if (result != 0) throw PosixError(result);
    result = pthread_mutex_init(&state_->mutex, nullptr);
    if (result != 0) {
        pthread_cond_destroy(&state_->condition);
        throw PosixError(result);
    }
}

Event::~Event() {
    pthread_cond_destroy(&state_->condition);
    pthread_mutex_destroy(&state_->mutex);
}

void Event::set() {
    State::Lock lock(*state_);
    state_->signaled = true;
    if (state_->manualReset) {
        pthread_cond_broadcast(&state_->condition);
    } else {
        pthread_cond_signal(&state_->condition);
    }
}

void Event::reset() {
    State::Lock lock(*state_);
    state_->signaled = false;
}

void Event::resetIfAuto() {
    State::Lock lock(*state_);
    if (!state_->manualReset) state_->signaled = false;
}

bool Event::check() {
    State::Lock lock(*state_);
    return state_->consumeSignal();
}

bool Event::checkOnly() {
    State::Lock lock(*state_);
    return state_->signaled;
}

void Event::wait() {
    State::Lock lock(*state_);
    while (!state_->signaled) pthread_cond_wait(&state_->condition, &state_->mutex);
    state_->consumeSignal();
}

bool Event::wait(unsigned int ms) {
    if (ms == kInfinite) {
        wait();
        return true;
    }
    if (ms == 0) return check();
    const timespec deadline = DeadlineAfter(ms);
    State::Lock lock(*state_);
    while (!state_->signaled) {
        if (pthread_cond_timedwait(&state_->condition, &state_->mutex, &deadline) == ETIMEDOUT) break;
    }
    return state_->consumeSignal();
}

}  // namespace zo::kel::osdep
