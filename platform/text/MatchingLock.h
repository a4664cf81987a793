#pragma once

// The one lock under which the process compiles and matches regular expressions, and the killing of
// threads, which has to heed it: a thread that died in the midst of matching would leave the tables
// of all matching half changed.
//
// The lock is a word with its owner in it. It is taken for every text that is matched, far too
// often to ask the system for it; and unlike a critical section it is had by the next in turn when
// its owner, or somebody who waited for it, was killed all the same.

#include <windows.h>

namespace tervane {

// Holds the lock for a scope, if it could be had in time. No thread takes it twice.
class MatchingLock {
public:
    explicit MatchingLock(DWORD milliseconds = INFINITE) noexcept { TryFor(milliseconds); }
    ~MatchingLock();
    MatchingLock(const MatchingLock&) = delete;
    MatchingLock& operator=(const MatchingLock&) = delete;

    bool TryFor(DWORD milliseconds) noexcept;

private:
    bool isHeld_ = false;
};

// Kills threads that were told to end and have not, the last resort. It holds the matching lock as
// long as it lives, unless that cannot be had within kLockPatienceMs: then matching is stuck,
// perhaps in the very thread to be killed.
class ThreadKiller {
public:
    // A thread dies at once, unless it is inside a driver.
    static constexpr DWORD kLockPatienceMs = 5000;
    static constexpr DWORD kDeathPatienceMs = 1000;

    ThreadKiller() noexcept : lock_(kLockPatienceMs) {}

    // The handle stays the caller's. True when the thread is gone; false when it is doomed, but has
    // not come out of a driver in time. It must not be the calling thread.
    bool Kill(HANDLE thread) noexcept;

private:
    MatchingLock lock_;
};

} // namespace tervane
