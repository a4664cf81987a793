#include "ZelBase/threads/MutexLock.h"

#include "ZelBase/threads/ThreadTerminateException.h"

namespace ZelBase {

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
