#include "ZelBase/threads/WIN32_Mutex.h"

#include "ZelBase/threads/ThreadTerminateException.h"
#include "ZelBase/threads/WIN32_ThreadWait.h"

namespace ZelBase {

WIN32_Mutex::WIN32_Mutex() noexcept : mutex_(CreateMutexA(nullptr, FALSE, nullptr)) {}

bool WIN32_Mutex::IsValid() const {
    return static_cast<bool>(mutex_);
}

bool WIN32_Mutex::Lock(std::uint32_t timeoutMs, Thread* thread) {
    RequireValid();
    if (WaitTiedToThread(mutex_.Get(), timeoutMs, thread) == TiedWait::kTimedOut) {
        return false;
    }
    if (!thread) {
        ownerThreadId_ = GetCurrentThreadId();
    }
    return true;
}

void WIN32_Mutex::Lock(Thread* thread) {
    if (!Lock(defaultTimeoutMs_, thread)) {
        throw ThreadTerminateException();
    }
}

void WIN32_Mutex::Unlock() {
    RequireValid();
    ownerThreadId_ = kNoOwner;
    ReleaseMutex(mutex_.Get());
}

void WIN32_Mutex::RequireValid() const {
    if (!IsValid()) {
        throw ThreadTerminateException();
    }
}

} // namespace ZelBase
