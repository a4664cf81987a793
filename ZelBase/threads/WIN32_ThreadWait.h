#pragma once

// The wait that all primitives share: for one kernel object, and for the word that the waiting
// thread shall end, whichever comes first.

#include "ZelBase/Handles.h"

#include <cstdint>

namespace ZelBase {

class Thread;

enum class TiedWait {
    kAcquired,
    // The owner of a mutex ended without giving it back; the caller has it now.
    kAbandoned,
    kTimedOut,
};

// Waits for `object`, at most `timeoutMs`. `thread` is the calling thread's own WIN32_Thread: its
// termination throws ThreadTerminateException, as does a failed wait and a Thread of another kind.
// With a null `thread` only the object counts and a failed wait is told as kTimedOut.
TiedWait WaitTiedToThread(HANDLE object, std::uint32_t timeoutMs, Thread* thread);

} // namespace ZelBase
