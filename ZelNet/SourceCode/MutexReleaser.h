#pragma once

#include "ZelBase/threads/Mutex.h"

namespace ZelNet {

// Gives back, at the end of a scope, a mutex that the caller got by a wait with a time-out.
class ZELBASE_SCOPED_LOCKABLE MutexReleaser {
public:
    explicit MutexReleaser(ZelBase::Mutex& mutex) ZELBASE_REQUIRES(mutex) : mutex_(mutex) {}
    ~MutexReleaser() ZELBASE_RELEASE() { mutex_.Unlock(); }
    MutexReleaser(const MutexReleaser&) = delete;
    MutexReleaser& operator=(const MutexReleaser&) = delete;

private:
    ZelBase::Mutex& mutex_;
};

} // namespace ZelNet
