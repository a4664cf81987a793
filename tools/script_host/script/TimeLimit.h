#pragma once

// How long the script may run: what `//T:` and `WScript.Timeout` say. When the time is over the
// script's thread is told to end and gets a moment to do so in good order, as after Ctrl+C.

#include "ZelBase/Handles.h"

#include <functional>

namespace tervane::scripthost {

class TimeLimit {
public:
    static constexpr DWORD kHighestSeconds = 32767;
    static constexpr DWORD kExitCode = 1;

    // `tell` is called on a thread of the system's, at most until the destructor returns, and must
    // not wait for the script's thread. The time counts from now.
    explicit TimeLimit(std::function<void()> tell);
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
    ~TimeLimit();

    // 0: no limit. False if the system has no timer left; then there is none.
    bool Set(DWORD seconds);
    DWORD Seconds() const noexcept { return seconds_; }

private:
    static void CALLBACK OnTimer(void* self, BOOLEAN);
    void Cancel();

    const std::function<void()> tell_;
    const DWORD start_;
    const ZelBase::UniqueHandle over_;
    HANDLE timer_ = nullptr;
    DWORD seconds_ = 0;
};

} // namespace tervane::scripthost
