// Recursive, owner-aware locks. A thread may enter the same section again;
// leave() from a thread that does not own the section does nothing, so a
// stray leave can never unlock another thread's section.
#pragma once

#include <pthread.h>

#include <atomic>
#include <memory>

#include "qkdynam_platform.h"

namespace zo::kel::osdep {

// Whether locks should use priority inheritance; not on this platform.
constexpr bool IsOSDeterministic() noexcept { return false; }

class QKDYNAM_API UnixCriticalSection {
public:
    UnixCriticalSection();
    ~UnixCriticalSection();
    UnixCriticalSection(const UnixCriticalSection&) = delete;
    UnixCriticalSection& operator=(const UnixCriticalSection&) = delete;

    void enter();
    bool tryEnter();  // false when another thread holds the section
    void leave();
    bool inOwningThread() const noexcept;

private:
    void takeOwnership() noexcept;

    // Written only by the holder, read by any thread asking whether it owns.
    std::atomic<pthread_t> owner_{0};
    pthread_mutex_t mutex_;
    int count_ = 0;
};

// A UnixCriticalSection on the heap behind one pointer, so the class stays
// one word wide wherever it is embedded.
class QKDYNAM_API CriticalSection {
public:
    CriticalSection() : section_(std::make_unique<UnixCriticalSection>()) {}

    void enter() { section_->enter(); }
    bool tryEnter() { return section_->tryEnter(); }
    void leave() { section_->leave(); }
    bool inOwningThread() const noexcept { return section_->inOwningThread(); }

private:
    std::unique_ptr<UnixCriticalSection> section_;
};

}  // namespace zo::kel::osdep
