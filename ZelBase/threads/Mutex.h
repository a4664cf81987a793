#pragma once

// A mutex whose waits have time-outs, and which its owner may lock again.
//
// As with Event, a wait that is given the calling thread's own Thread ends with
// ThreadTerminateException when that thread is told to terminate, and every operation but IsValid
// throws it when there is no kernel object. A mutex whose owner died is had by the next in turn.

#include "ZelBase/Handles.h"
#include "ZelBase/threads/ThreadAnnotations.h"
#include "ZelBase/threads/Timeout.h"

#include <atomic>
#include <cstdint>
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

class WIN32_Mutex final : public Mutex {
public:
    static constexpr DWORD kNoOwner = 0xFFFFFFFF;

    WIN32_Mutex() noexcept;

    bool IsValid() const override;
    bool Lock(std::uint32_t timeoutMs, Thread* thread) override ZELBASE_TRY_ACQUIRE(true);
    void Lock(Thread* thread) override ZELBASE_ACQUIRE();
    void Unlock() override ZELBASE_RELEASE();

    // For diagnosis: the thread that got the mutex last without naming its Thread, kNoOwner when
    // the mutex was given back since.
    DWORD OwnerThreadId() const noexcept { return ownerThreadId_; }

private:
    void RequireValid() const;

    std::atomic<DWORD> ownerThreadId_ = kNoOwner;
    UniqueHandle mutex_;
};

// Whatever holds a mutex for as long as it lives.
class AMutexLock {
public:
    virtual ~AMutexLock() = default;
    AMutexLock(const AMutexLock&) = delete;
    AMutexLock& operator=(const AMutexLock&) = delete;

protected:
    explicit AMutexLock(Mutex* mutex) noexcept : mutex_(mutex) {}

    Mutex* mutex_;
};

// Locks a mutex for a scope, waiting for the mutex's default time-out and for no thread's end. The
// mutex stays the caller's. The constructor throws ThreadTerminateException when it cannot have the
// mutex, a null one included; holders catch it and log where.
class ZELBASE_SCOPED_LOCKABLE MutexLock final : public AMutexLock {
public:
    explicit MutexLock(Mutex* mutex) ZELBASE_ACQUIRE(mutex);
    ~MutexLock() override ZELBASE_RELEASE();
};

// Gives back, at the end of a scope, a mutex that the caller got by a wait with a time-out.
class ZELBASE_SCOPED_LOCKABLE MutexReleaser {
public:
    explicit MutexReleaser(Mutex& mutex) ZELBASE_REQUIRES(mutex) : mutex_(mutex) {}
    ~MutexReleaser() ZELBASE_RELEASE() { mutex_.Unlock(); }
    MutexReleaser(const MutexReleaser&) = delete;
    MutexReleaser& operator=(const MutexReleaser&) = delete;

private:
    Mutex& mutex_;
};

// Holds a mutex for a scope, if it could be had in time: ask before relying on it. The mutex stays
// the caller's; a null one is never had. The analysis takes it for had, because it cannot follow
// the question.
class ZELBASE_SCOPED_LOCKABLE TimedMutexLock final {
public:
    TimedMutexLock(Mutex* mutex, std::uint32_t milliseconds)
        ZELBASE_ACQUIRE(mutex) ZELBASE_NO_LOCK_ANALYSIS
        : mutex_(mutex && mutex->Lock(milliseconds, nullptr) ? mutex : nullptr) {}
    ~TimedMutexLock() ZELBASE_RELEASE() ZELBASE_NO_LOCK_ANALYSIS {
        if (mutex_) {
            mutex_->Unlock();
        }
    }
    TimedMutexLock(const TimedMutexLock&) = delete;
    TimedMutexLock& operator=(const TimedMutexLock&) = delete;

    explicit operator bool() const noexcept { return mutex_ != nullptr; }

private:
    Mutex* mutex_;
};

} // namespace ZelBase
