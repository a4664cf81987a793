#pragma once

// How long one step of a conversation may still take, by the tick counter.

#include <algorithm>
#include <cstdint>

#include <windows.h>

namespace tervane {

class StepDeadline {
public:
    // Counts from now. A time-out that is not positive is over at once.
    explicit StepDeadline(long seconds) noexcept
        : start_(GetTickCount()), limitMs_(std::max<std::int64_t>(seconds, 0) * 1000) {}

    // Milliseconds, 0 when the time is over. Right for limits below the 49 days of the counter.
    DWORD Remaining() const noexcept {
        const std::int64_t elapsed = GetTickCount() - start_; // modulo the counter's size
        return static_cast<DWORD>(std::clamp<std::int64_t>(limitMs_ - elapsed, 0, INFINITE - 1));
    }

private:
    DWORD start_;
    std::int64_t limitMs_;
};

} // namespace tervane
