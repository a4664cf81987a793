// The measurement of a processor's speed with simulated processors and with the real one, and what
// the processor and the registry say of it.

#include "objects/sysinfo/processor/BoundedThread.h"
#include "objects/sysinfo/processor/FaultBarrier.h"
#include "objects/sysinfo/processor/ProcessorFacts.h"
#include "objects/sysinfo/processor/SpeedMeasurement.h"
#include "support/ScratchRegistry.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>

#include <windows.h>

namespace tervane {
namespace {

TEST(SpeedEstimateTest, TurnsTicksIntoMicroseconds) {
    const struct {
        std::int64_t ticks;
        std::int64_t frequency;
        std::int64_t microseconds;
    } rows[] = {
        {1000, 1193182, 838},    {1000, 3579545, 279},
        {1000, 10'000'000, 100}, {1000, 1'000'000, 1000},
        {1000, 1000, 1'000'000}, {999, 1193, 839'496},
        {1000, 1193, 840'336},   {1000, 9, 0},
        {0, 1193182, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.microseconds, ElapsedMicroseconds(row.ticks, row.frequency)) << row.frequency;
    }
}

TEST(SpeedEstimateTest, TruncatesAndRounds) {
    const struct {
        std::int64_t cycles;
        long truncated;
        long rounded;
    } rows[] = {
        {5000, 500, 500}, {5005, 500, 500}, {5006, 500, 501}, {5009, 500, 501}, {-70, -7, -7}};
    for (const auto& row : rows) {
        const SpeedResult result = MakeSpeedResult(row.cycles, 10);
        EXPECT_EQ(row.truncated, result.truncatedMhz) << row.cycles;
        EXPECT_EQ(row.rounded, result.roundedMhz) << row.cycles;
    }
    EXPECT_EQ(0, MakeSpeedResult(1000, 0).truncatedMhz);
}

TEST(SpeedEstimateTest, SettlesWhenThreeInARowAgree) {
    const struct {
        std::vector<int> estimates; // MHz
        bool settled;
    } rows[] = {
        {{500, 500}, false},          {{500, 500, 500}, true},       {{500, 501, 502}, true},
        {{500, 500, 502}, false}, // 4/3 from the mean
        {{100, 500, 501, 501}, true}, {{500, 500, 900, 500}, false}, {{9, 500, 9, 500, 500}, false},
    };
    for (const auto& [estimates, settled] : rows) {
        SpeedTrials trials;
        for (const int estimate : estimates) {
            EXPECT_FALSE(trials.IsSettled());
            trials.Add(estimate * 100, 100);
        }
        EXPECT_EQ(settled, trials.IsSettled()) << estimates.size();
    }
    SpeedTrials never;
    for (int trial = 0; trial < 20; ++trial) {
        EXPECT_FALSE(never.IsSettled());
        never.Add(trial % 2 ? 100 : 300, 1);
    }
    EXPECT_TRUE(never.IsSettled());
    EXPECT_EQ(200, never.Result().truncatedMhz);
}

// A processor on which reading either counter takes one tick of the other clock.
struct SimulatedClock final : ProcessorClock {
    int family = 6;
    bool counts = true;
    std::int64_t frequency = 1'000'000;
    std::int64_t cyclesPerTick = 733;
    std::int64_t cyclesPerRound = 0;
    std::int64_t step = 1;
    std::int64_t now = 0;
    std::function<void()> beforeCycles = [] {};
    int trials = 0;

    int Family() override { return family; }
    bool HasCycleCounter() override { return counts; }
    std::int64_t Cycles() override {
        beforeCycles();
        ++trials;
        return now * cyclesPerTick;
    }
    std::int64_t TickFrequency() override { return frequency; }
    std::int64_t Ticks() override { return now += step; }
    void Loop(long rounds) override { now += rounds * cyclesPerRound / cyclesPerTick; }
};

TEST(SpeedMeasurementTest, CountsCyclesOverTrials) {
    SimulatedClock steady;
    const SpeedResult result = MeasureSpeed(steady);
    EXPECT_EQ(733, result.truncatedMhz);
    EXPECT_EQ(733, result.roundedMhz);
    EXPECT_EQ(3 * 1000, result.microseconds);
    EXPECT_EQ(3 * 2, steady.trials);

    SimulatedClock restless;
    restless.beforeCycles = [&] { restless.cyclesPerTick += 20; };
    MeasureSpeed(restless);
    EXPECT_EQ(20 * 2, restless.trials);
}

TEST(SpeedMeasurementTest, TimesALoopWithoutACycleCounter) {
    const struct {
        int family;
        std::int64_t cyclesPerRound;
        long speed;
    } rows[] = {{3, 11, 40}, {4, 4, 40}, {5, 1, 40}, {15, 1, 40}, {2, 11, 0}, {0, 11, 0}};
    for (const auto& row : rows) {
        SimulatedClock old;
        old.counts = false;
        old.family = row.family;
        old.cyclesPerTick = 40;
        old.cyclesPerRound = row.cyclesPerRound;
        EXPECT_NEAR(row.speed, MeasureSpeed(old).truncatedMhz, 1) << row.family;
    }
}

TEST(SpeedMeasurementTest, IsNothingWithoutAClockThatRuns) {
    SimulatedClock none;
    none.frequency = 0;
    EXPECT_EQ(0, MeasureSpeedOnThread(none));
    SimulatedClock still;
    still.step = 0;
    EXPECT_EQ(0, MeasureSpeedOnThread(still));
    SimulatedClock backwards;
    backwards.cyclesPerTick = -500;
    EXPECT_EQ(0, MeasureSpeedOnThread(backwards));
    SimulatedClock faulting;
    faulting.beforeCycles = [] { asm volatile("ud2"); };
    EXPECT_EQ(0, MeasureSpeedOnThread(faulting));
    SimulatedClock stuck;
    stuck.beforeCycles = [] { Sleep(INFINITE); };
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(-1, MeasureSpeedOnThread(stuck, 1));
    EXPECT_GE(GetTickCount64() - start, 990u);
}

// With another program of the system's choice between two readings, one measurement may err.
TEST(SpeedMeasurementTest, AgreesWithALongCount) {
    ProcessorClock& clock = ProcessorClock::System();
    if (!clock.HasCycleCounter()) {
        GTEST_SKIP() << "no cycle counter";
    }
    const std::int64_t ticks = clock.Ticks();
    const std::int64_t cycles = clock.Cycles();
    Sleep(300);
    const std::int64_t lasted = clock.Ticks() - ticks;
    const double expected = static_cast<double>(clock.Cycles() - cycles) *
                            static_cast<double>(clock.TickFrequency()) /
                            (1e6 * static_cast<double>(lasted));
    long nearest = 0;
    for (int attempt = 0; attempt < 5; ++attempt) {
        const long speed = MeasureSpeedOnThread(clock);
        if (std::abs(speed - expected) < std::abs(nearest - expected)) {
            nearest = speed;
        }
    }
    EXPECT_NEAR(expected, nearest, expected / 50);
}

TEST(ProcessorTest, ClassifiesTheFamily) {
    const struct {
        unsigned architecture;
        unsigned level;
        unsigned long type;
        int family;
    } rows[] = {{0, 3, 586, 3}, {0, 6, 0, 6},    {0, 99, 0, 99}, {0, 100, 0, 5},  {0, 2, 0, 5},
                {0, 0, 486, 5}, {9, 6, 8664, 5}, {1, 6, 386, 3}, {2, 21, 486, 4}, {6, 31, 2200, 5}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.family, ClassifyProcessorFamily(row.architecture, row.level, row.type));
    }
}

TEST(ProcessorTest, ReadsWhatTheSystemNotedDown) {
    const test::ScratchHive machine(RegistryHive::kLocalMachine);
    // Nothing noted: the processor itself is asked.
    EXPECT_EQ(ReadProcessorIdentity().vendor, ProcessorVendor());
    EXPECT_EQ(12u, ProcessorVendor().size());
    EXPECT_EQ(L"", ProcessorDescription());
    EXPECT_GT(ProcessorSpeed(), 100);

    const RegistryKey processor =
        machine.Create(L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0");
    processor.WriteText(L"~mhz", L"500");
    EXPECT_GT(ProcessorSpeed(), 500);
    processor.WriteNumber(L"~mhz", 66);
    processor.WriteText(L"VendorIdentifier", L"CyrixInstead");
    processor.WriteText(L"Identifier", L"x86 Family 5 Model 4 Stepping 4");
    EXPECT_EQ(66, ProcessorSpeed());
    EXPECT_EQ(L"CyrixInstead", ProcessorVendor());
    EXPECT_EQ(L"x86 Family 5 Model 4 Stepping 4", ProcessorDescription());
    processor.WriteText(L"VendorIdentifier", L"");
    EXPECT_EQ(L"", ProcessorVendor());
}

TEST(BoundedThreadTest, EndsWithTheWorkOrWithTheTime) {
    const auto steps = std::make_shared<int>(0);
    EXPECT_EQ(BoundedEnd::kEnded, RunBounded([steps] { ++*steps; }, INFINITE));
    EXPECT_EQ(BoundedEnd::kEnded, RunBounded([] { throw std::runtime_error(""); }, 5000));
    EXPECT_EQ(1, *steps);
    const ULONGLONG start = GetTickCount64();
    const auto endless = [steps] {
        for (;; Sleep(10)) {
            ++*steps;
        }
    };
    EXPECT_EQ(BoundedEnd::kTimedOut, RunBounded(endless, 200));
    EXPECT_GE(GetTickCount64() - start, 190u);
    const int until = *steps;
    EXPECT_GT(until, 1);
    Sleep(100);
    EXPECT_EQ(until, *steps);
}

// A fault that is not caught ends this program.
TEST(FaultBarrierTest, AFaultEndsItsThreadOnly) {
    const FaultBarrier barrier;
    void (*const faults[])() = {[] { asm volatile("ud2"); },
                                [] { asm volatile("cli"); }, // for the system only
                                [] {
                                    volatile int* nowhere = nullptr;
                                    *nowhere = 1;
                                }};
    for (const auto fault : faults) {
        const auto steps = std::make_shared<int>(0);
        const auto work = [steps, fault] {
            FaultBarrier::GuardThisThread();
            ++*steps;
            fault();
            ++*steps;
        };
        EXPECT_EQ(BoundedEnd::kEnded, RunBounded(work, 5000));
        EXPECT_EQ(1, *steps);
    }
}

} // namespace
} // namespace tervane
