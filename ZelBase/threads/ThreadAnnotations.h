#pragma once

// Which lock guards what, written where clang's -Wthread-safety can check it. Other compilers see
// nothing of it.

#if defined(__clang__)
#define ZELBASE_ANNOTATE(x) __attribute__((x))
#else
#define ZELBASE_ANNOTATE(x)
#endif

// A class that is a lock; a class whose lifetime is the time a lock is held.
#define ZELBASE_LOCKABLE ZELBASE_ANNOTATE(capability("mutex"))
#define ZELBASE_SCOPED_LOCKABLE ZELBASE_ANNOTATE(scoped_lockable)
// A field that is only touched with the lock held; a function that is called with it held, or
// without.
#define ZELBASE_GUARDED_BY(lock) ZELBASE_ANNOTATE(guarded_by(lock))
#define ZELBASE_REQUIRES(...) ZELBASE_ANNOTATE(requires_capability(__VA_ARGS__))
#define ZELBASE_EXCLUDES(...) ZELBASE_ANNOTATE(locks_excluded(__VA_ARGS__))
// A function that takes the lock, or gives it back. Without argument: the object itself.
#define ZELBASE_ACQUIRE(...) ZELBASE_ANNOTATE(acquire_capability(__VA_ARGS__))
#define ZELBASE_TRY_ACQUIRE(...) ZELBASE_ANNOTATE(try_acquire_capability(__VA_ARGS__))
#define ZELBASE_RELEASE(...) ZELBASE_ANNOTATE(release_capability(__VA_ARGS__))
// A function whose locking the analysis cannot follow; say why beside it.
#define ZELBASE_NO_LOCK_ANALYSIS ZELBASE_ANNOTATE(no_thread_safety_analysis)

namespace ZelBase {

// Holds a lock that cannot fail for a scope.
template <typename Lock>
class ZELBASE_SCOPED_LOCKABLE ScopedLock {
public:
    explicit ScopedLock(Lock& lock) ZELBASE_ACQUIRE(lock) : lock_(lock) { lock_.Lock(); }
    ~ScopedLock() ZELBASE_RELEASE() { lock_.Unlock(); }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    Lock& lock_;
};

} // namespace ZelBase
