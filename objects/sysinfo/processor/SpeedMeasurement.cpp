#include "objects/sysinfo/processor/SpeedMeasurement.h"

#include "objects/sysinfo/processor/BoundedThread.h"
#include "objects/sysinfo/processor/FaultBarrier.h"
#include "objects/sysinfo/processor/ProcessorFacts.h"

#include <x86intrin.h>

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <memory>

namespace tervane {
namespace {

class SystemClock final : public ProcessorClock {
public:
    int Family() override { return ProcessorFamily(); }

    bool HasCycleCounter() override { return ReadProcessorIdentity().hasTimeStampCounter; }

    std::int64_t Cycles() override { return static_cast<std::int64_t>(__rdtsc()); }

    std::int64_t TickFrequency() override {
        LARGE_INTEGER frequency = {};
        return QueryPerformanceFrequency(&frequency) ? frequency.QuadPart : 0;
    }

    std::int64_t Ticks() override {
        LARGE_INTEGER ticks = {};
        QueryPerformanceCounter(&ticks);
        return ticks.QuadPart;
    }

    void Loop(long rounds) override {
        asm volatile("1: dec %0\n\t"
                     "jnz 1b"
                     : "+r"(rounds)
                     :
                     : "cc");
    }
};

} // namespace

ProcessorClock& ProcessorClock::System() {
    static SystemClock clock;
    return clock;
}

namespace {

constexpr std::int64_t kSettlingTicks = 50;
constexpr std::int64_t kTrialTicks = 1000;
// After so many readings without getting there, the clock stands still.
constexpr long kMostReadings = 20'000'000;

// For a processor without a cycle counter.
constexpr long kLoopRounds = 4000;
constexpr int kLoopTrials = 10;

// The cycles of one round of the loop, by family. From the Pentium on, both of its instructions run
// in one.
long CyclesPerRound(int family) noexcept {
    constexpr long kCycles[] = {11, 4, 1};
    constexpr int kFirstFamily = 3;
    const int newest = static_cast<int>(std::size(kCycles)) - 1;
    return kCycles[std::min(family - kFirstFamily, newest)];
}

// Other threads would be counted as this one's time.
class RaisedPriority {
public:
    RaisedPriority() noexcept : before_(GetThreadPriority(GetCurrentThread())) {
        if (before_ != THREAD_PRIORITY_ERROR_RETURN) {
            SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
        }
    }
    ~RaisedPriority() {
        if (before_ != THREAD_PRIORITY_ERROR_RETURN) {
            SetThreadPriority(GetCurrentThread(), before_);
        }
    }
    RaisedPriority(const RaisedPriority&) = delete;
    RaisedPriority& operator=(const RaisedPriority&) = delete;

private:
    const int before_;
};

// Spins until the clock is `ticks` beyond `start`. What it says then; nullopt when it stands still.
std::optional<std::int64_t> SpinUntil(ProcessorClock& clock, std::int64_t start,
                                      std::int64_t ticks) {
    for (long reading = 0; reading < kMostReadings; ++reading) {
        const std::int64_t now = clock.Ticks();
        if (now - start >= ticks) {
            return now;
        }
    }
    return std::nullopt;
}

// False when the clock stands still.
bool AddTrial(ProcessorClock& clock, std::int64_t frequency, SpeedTrials& trials) {
    const RaisedPriority raised;
    const std::int64_t start = clock.Ticks();
    const auto first = SpinUntil(clock, start, kSettlingTicks);
    const std::int64_t firstCycles = first ? clock.Cycles() : 0;
    const auto last = first ? SpinUntil(clock, *first, kTrialTicks) : std::nullopt;
    if (!last) {
        return false;
    }
    const std::int64_t cycles = clock.Cycles() - firstCycles;
    trials.Add(cycles, ElapsedMicroseconds(*last - *first, frequency));
    return true;
}

SpeedResult CountCycles(ProcessorClock& clock, std::int64_t frequency) {
    SpeedTrials trials;
    while (!trials.IsSettled()) {
        if (!AddTrial(clock, frequency, trials)) {
            return {};
        }
    }
    return trials.Result();
}

// The shortest of several times is the one that was interrupted least.
SpeedResult TimeLoop(ProcessorClock& clock, std::int64_t frequency, int family) {
    const RaisedPriority raised;
    std::optional<std::int64_t> shortest;
    for (int trial = 0; trial < kLoopTrials; ++trial) {
        const std::int64_t start = clock.Ticks();
        clock.Loop(kLoopRounds);
        const std::int64_t ticks = clock.Ticks() - start;
        shortest = std::min(shortest.value_or(ticks), ticks);
    }
    return MakeSpeedResult(CyclesPerRound(family) * kLoopRounds,
                           ElapsedMicroseconds(*shortest, frequency));
}

} // namespace

SpeedResult MeasureSpeed(ProcessorClock& clock) {
    const std::int64_t frequency = clock.TickFrequency();
    if (frequency <= 0) {
        return {};
    }
    if (clock.HasCycleCounter()) {
        return CountCycles(clock, frequency);
    }
    const int family = clock.Family();
    return family >= 3 ? TimeLoop(clock, frequency, family) : SpeedResult();
}

long MeasureSpeedOnThread(ProcessorClock& clock, std::optional<unsigned long> limitSeconds) {
    constexpr unsigned long kLongestSeconds = (INFINITE - 1) / 1000;
    const DWORD limitMs = limitSeconds ? std::min(*limitSeconds, kLongestSeconds) * 1000 : INFINITE;
    const FaultBarrier barrier;
    const auto result = std::make_shared<SpeedResult>();
    const BoundedEnd end = RunBounded(
        [&clock, result] {
            FaultBarrier::GuardThisThread();
            *result = MeasureSpeed(clock);
        },
        limitMs);
    return end == BoundedEnd::kEnded ? std::max(result->truncatedMhz, 0L) : -1;
}

} // namespace tervane
