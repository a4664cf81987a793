#pragma once

// What a wait thread does, without the thread: it waits, and it tells how that ended.

#include <optional>

#include <windows.h>

namespace tervane {

// The numbers are what scripts see.
enum class WaitResult : LONG { kMet = 0, kTimedOut = 1, kAborted = 2 };

// Made on the thread that starts the wait, used and destroyed on the wait thread.
class WaitTask {
public:
    virtual ~WaitTask() = default;

    // Waits; nullopt, and soon, when `abort` (an event) is signalled. Whatever it throws counts as
    // a time-out.
    virtual std::optional<WaitResult> Wait(HANDLE abort) = 0;
    // Called once when the wait has ended with something to tell.
    virtual void Report(LONG id, WaitResult result) noexcept = 0;
};

} // namespace tervane
