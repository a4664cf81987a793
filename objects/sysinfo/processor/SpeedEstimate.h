#pragma once

// The arithmetic of measuring a processor's speed: cycles counted over a time that was measured in
// ticks of another clock.

#include <cstdint>
#include <optional>

namespace tervane {

struct SpeedResult {
    std::int64_t cycles = 0;
    std::int64_t microseconds = 0;
    // Without its decimals.
    long truncatedMhz = 0;
    // One more when the first decimal is 6 or above.
    long roundedMhz = 0;
};

// `frequency` is the number of ticks in a second; 0 when it is below 10.
std::int64_t ElapsedMicroseconds(std::int64_t ticks, std::int64_t frequency) noexcept;

// All figures 0 where there is nothing to divide by.
SpeedResult MakeSpeedResult(std::int64_t cycles, std::int64_t microseconds) noexcept;

// Adds trials up until their estimates agree.
class SpeedTrials {
public:
    static constexpr int kMost = 20;

    void Add(std::int64_t cycles, std::int64_t microseconds) noexcept;
    // Whether a further trial would not change the result: each of the last three is close to their
    // mean, or there were enough.
    bool IsSettled() const noexcept;
    // Of all trials together.
    SpeedResult Result() const noexcept { return MakeSpeedResult(cycles_, microseconds_); }

private:
    static constexpr int kCompared = 3;

    int count_ = 0;
    std::int64_t cycles_ = 0;
    std::int64_t microseconds_ = 0;
    // Of the last trials, in MHz, rounded half up.
    std::int64_t estimates_[kCompared] = {};
};

} // namespace tervane
