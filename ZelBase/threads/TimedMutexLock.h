#pragma once

#include "ZelBase/threads/Mutex.h"

#include <cstdint>

namespace ZelBase {

// Holds a mutex for a scope, if it could be had in time: ask before relying on it. The mutex stays
// the caller's; a null one is never had.
class TimedMutexLock final {
public:
    TimedMutexLock(Mutex* mutex, std::uint32_t milliseconds)
        : mutex_(mutex && mutex->Lock(milliseconds, nullptr) ? mutex : nullptr) {}
    ~TimedMutexLock() {
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
