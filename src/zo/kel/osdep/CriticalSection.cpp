#include "zo/kel/osdep/CriticalSection.h"

#include <cerrno>

#include "zo/kel/osdep/OSException.h"

namespace zo::kel::osdep {

UnixCriticalSection::UnixCriticalSection() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    if constexpr (IsOSDeterministic()) pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
    const int result = pthread_mutex_init(&mutex_, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (result != 0) throw PosixError(result);
}

UnixCriticalSection::~UnixCriticalSection() { pthread_mutex_destroy(&mutex_); }

void UnixCriticalSection::takeOwnership() noexcept {
    owner_.store(pthread_self());
    ++count_;
}

void UnixCriticalSection::enter() {
    if (const int result = pthread_mutex_lock(&mutex_); result != 0) throw PosixError(result);
    takeOwnership();
}

bool UnixCriticalSection::tryEnter() {
    // Any refusal (busy, or the recursion limit reached) means not entered.
    if (pthread_mutex_trylock(&mutex_) != 0) return false;
    takeOwnership();
    return true;
}

void UnixCriticalSection::leave() {
    if (!inOwningThread()) return;  // the owner has entered at least once, so count_ > 0
    if (--count_ == 0) owner_.store(0);
    pthread_mutex_unlock(&mutex_);
}

bool UnixCriticalSection::inOwningThread() const noexcept { return pthread_equal(owner_.load(), pthread_self()); }

}  // namespace zo::kel::osdep
