#pragma once

// The lock for threads of one process that wait for each other only briefly. Its owner may enter it
// again.

#include "ZelBase/threads/ThreadAnnotations.h"

#include <windows.h>

namespace ZelBase {

class ZELBASE_LOCKABLE CriticalSection {
public:
    CriticalSection() noexcept { InitializeCriticalSection(&section_); }
    ~CriticalSection() { DeleteCriticalSection(&section_); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Lock() noexcept ZELBASE_ACQUIRE() { EnterCriticalSection(&section_); }
    void Unlock() noexcept ZELBASE_RELEASE() { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
};

// Holds a critical section for a scope.
class ZELBASE_SCOPED_LOCKABLE CriticalSectionLock {
public:
    explicit CriticalSectionLock(CriticalSection& section) noexcept ZELBASE_ACQUIRE(section)
        : section_(section) {
        section_.Lock();
    }
    ~CriticalSectionLock() ZELBASE_RELEASE() { section_.Unlock(); }
    CriticalSectionLock(const CriticalSectionLock&) = delete;
    CriticalSectionLock& operator=(const CriticalSectionLock&) = delete;

private:
    CriticalSection& section_;
};

} // namespace ZelBase
