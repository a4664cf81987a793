#pragma once

// The decision that the script ends before its last statement: by WScript.Quit, by an error that no
// one caught, or by Ctrl+C. The first decision counts; its exit code becomes the program's.

#include "ZelBase/Handles.h"

#include <atomic>

namespace tervane::scripthost {

class ScriptEnd {
public:
    ScriptEnd() noexcept : signal_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

    // Any thread.
    void Request(DWORD exitCode) noexcept;
    bool IsRequested() const noexcept { return state_ == State::kRequested; }
    // 0 as long as nothing is requested.
    DWORD ExitCode() const noexcept { return exitCode_; }
    // Becomes and stays signaled with the request. Null only if the system had no event left.
    HANDLE Signal() const noexcept { return signal_.Get(); }

private:
    enum class State { kRunning, kClaimed, kRequested };

    std::atomic<State> state_{State::kRunning};
    std::atomic<DWORD> exitCode_{0};
    ZelBase::UniqueHandle signal_;
};

} // namespace tervane::scripthost
