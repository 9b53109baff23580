// A signalled/unsignalled flag that threads wait on. A manual-reset event
// releases every waiter and stays signalled until reset(); an automatic-reset
// event releases one waiter and clears itself as that waiter returns.
#pragma once

#include <memory>

#include "qkdynam_platform.h"

namespace zo::kel::osdep {

class QKDYNAM_API Event {
public:
    static constexpr unsigned int kInfinite = 0xFFFFFFFF;

    Event(bool manualReset, bool initiallySignaled);
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void set();
    void reset();
    void resetIfAuto();
    bool check();      // the state; clears an automatic-reset event
    bool checkOnly();  // the state, never clearing
    void wait();
    // kInfinite waits for ever (true), 0 only checks; otherwise true when
    // signalled before `ms` milliseconds passed.
    bool wait(unsigned int ms);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace zo::kel::osdep
