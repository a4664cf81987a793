#pragma once

// A processor instruction that this machine does not know, or does not allow, faults, and a fault
// ends the host's process. While a barrier lives, a fault on a guarded thread ends that thread
// only.
//
// The thread that waits makes the barrier; the other one, started by ModulePin, calls
// GuardThisThread before it does what may fault, and owns nothing then that only its own end would
// give back, but its reference on the library, which it does give back. Before Windows XP there
// are no such barriers; the processors that Windows 2000 runs on know what it is needed for.

#include "ZelBase/SystemLibrary.h"

#include <windows.h>

namespace tervane {

class FaultBarrier {
public:
    FaultBarrier() noexcept;
    ~FaultBarrier();
    FaultBarrier(const FaultBarrier&) = delete;
    FaultBarrier& operator=(const FaultBarrier&) = delete;

    // For the rest of the calling thread's life, as long as a barrier lives.
    static void GuardThisThread() noexcept;

private:
    const ZelBase::SystemLibrary kernel_{"kernel32.dll"};
    void* handler_ = nullptr;
};

} // namespace tervane
