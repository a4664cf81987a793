#pragma once

// A mutex whose waits have time-outs, and which its owner may lock again.
//
// As with Event, a wait that is given the calling thread's own Thread ends with
// ThreadTerminateException when that thread is told to terminate, and every operation but IsValid
// throws it when there is no kernel object. A mutex whose owner died is had by the next in turn.

#include "ZelBase/threads/ThreadAnnotations.h"
#include "ZelBase/threads/Timeout.h"

#include <memory>

namespace ZelBase {

class Thread;

class ZELBASE_LOCKABLE Mutex {
public:
    // A new mutex that nobody owns; null when it cannot be made.
    static std::unique_ptr<Mutex> Create();

    virtual bool IsValid() const = 0;
    // True when the caller has the mutex now, false when time ran out.
    virtual bool Lock(std::uint32_t timeoutMs, Thread* thread) ZELBASE_TRY_ACQUIRE(true) = 0;
    // Waits for the default time-out (kInfinite). Throws ThreadTerminateException when it cannot
    // have the mutex.
    virtual void Lock(Thread* thread) ZELBASE_ACQUIRE() = 0;
    virtual void Unlock() ZELBASE_RELEASE() = 0;
    virtual ~Mutex() = default;

protected:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    std::uint32_t defaultTimeoutMs_ = kInfinite;
};

} // namespace ZelBase
