#pragma once

// A lock of one process for short sections that cannot fail, in code that also builds without
// Windows. Whoever waits under it longer than for a copy should have a Mutex.
//
// On Windows it is the critical section: the compiler's run-time library for the system's own
// threads has no std::mutex.

#ifdef _WIN32

#include "ZelBase/threads/CriticalSection.h"

namespace ZelBase {

using LocalMutex = CriticalSection;
using LocalMutexLock = CriticalSectionLock;

} // namespace ZelBase

#else

#include "ZelBase/threads/ThreadAnnotations.h"

#include <mutex>

namespace ZelBase {

class ZELBASE_LOCKABLE LocalMutex {
public:
    void Lock() ZELBASE_ACQUIRE() { mutex_.lock(); }
    void Unlock() ZELBASE_RELEASE() { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

using LocalMutexLock = ScopedLock<LocalMutex>;

} // namespace ZelBase

#endif
