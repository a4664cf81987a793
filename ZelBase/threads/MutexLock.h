#pragma once

#include "ZelBase/threads/AMutexLock.h"
#include "ZelBase/threads/Mutex.h"

namespace ZelBase {

// Locks a mutex for a scope, waiting for the mutex's default time-out and for no thread's end. The
// mutex stays the caller's. The constructor throws ThreadTerminateException when it cannot have the
// mutex, a null one included; holders catch it and log where.
class ZELBASE_SCOPED_LOCKABLE MutexLock final : public AMutexLock {
public:
    explicit MutexLock(Mutex* mutex) ZELBASE_ACQUIRE(mutex);
    ~MutexLock() override ZELBASE_RELEASE();
};

} // namespace ZelBase
