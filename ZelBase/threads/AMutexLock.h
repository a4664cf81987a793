#pragma once

namespace ZelBase {

class Mutex;

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

} // namespace ZelBase
