#include "ZelBase/MutexLock.h"

#include "ZelBase/ThreadTerminateException.h"

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
