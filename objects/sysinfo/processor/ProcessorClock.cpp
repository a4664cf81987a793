#include "objects/sysinfo/processor/ProcessorClock.h"

#include "objects/sysinfo/processor/ProcessorIdentity.h"

#include <x86intrin.h>

#include <windows.h>

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

} // namespace tervane
