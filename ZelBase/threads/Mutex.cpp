#include "ZelBase/threads/Mutex.h"

#include "ZelBase/threads/Thread.h"
#include "ZelBase/threads/WIN32_ThreadWait.h"

#include <new>

namespace ZelBase {

std::unique_ptr<Mutex> Mutex::Create() {
    std::unique_ptr<Mutex> mutex(new (std::nothrow) WIN32_Mutex);
    return mutex && mutex->IsValid() ? std::move(mutex) : nullptr;
}

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

MutexLock::MutexLock(Mutex* mutex) : AMutexLock(mutex) {
    if (!mutex_) {
        throw ThreadTerminateException();
    }
    mutex_->Lock(nullptr);
}

MutexLock::~MutexLock() {
    mutex_->Unlock();
}

} // namespace ZelBase
