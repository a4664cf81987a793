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

using CriticalSectionLock = ScopedLock<CriticalSection>;

} // namespace ZelBase
