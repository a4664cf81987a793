#include "platform/text/MatchingLock.h"

#include "ZelBase/Handles.h"

#include <atomic>

namespace tervane {
namespace {

// A match takes microseconds; who meets one tries again so often before it sleeps in between.
constexpr int kBriefTries = 50;

// The identifier of the thread that holds the lock, 0 for none.
std::atomic<DWORD> owner = 0;
// Whether somebody sleeps for it, who would never find it free beside a thread that matches without
// a pause. A thread that gives the lock back steps aside then.
std::atomic<bool> isWanted = false;

bool HasDied(DWORD thread) noexcept {
    const ZelBase::UniqueHandle handle(OpenThread(SYNCHRONIZE, FALSE, thread));
    return handle ? WaitForSingleObject(handle.Get(), 0) == WAIT_OBJECT_0
                  : GetLastError() == ERROR_INVALID_PARAMETER; // there is no such thread
}

bool TryToTake() noexcept {
    DWORD holder = 0;
    return owner.compare_exchange_strong(holder, GetCurrentThreadId()) ||
           (HasDied(holder) && owner.compare_exchange_strong(holder, GetCurrentThreadId()));
}

} // namespace

bool MatchingLock::TryFor(DWORD milliseconds) noexcept {
    const DWORD start = GetTickCount();
    for (int tries = 0; !isHeld_; ++tries) {
        if (TryToTake()) {
            isHeld_ = true;
        } else if (GetTickCount() - start >= milliseconds) {
            break;
        } else if (tries < kBriefTries) {
            Sleep(0);
        } else {
            isWanted = true;
            Sleep(1);
        }
    }
    return isHeld_;
}

MatchingLock::~MatchingLock() {
    if (!isHeld_) {
        return;
    }
    owner = 0;
    if (isWanted.exchange(false)) {
        Sleep(1);
    }
}

bool ThreadKiller::Kill(HANDLE thread) noexcept {
    TerminateThread(thread, 1);
    const bool isGone = WaitForSingleObject(thread, kDeathPatienceMs) == WAIT_OBJECT_0;
    // If it held the lock: now, while its identifier cannot become that of a new thread.
    lock_.TryFor(0);
    return isGone;
}

} // namespace tervane
