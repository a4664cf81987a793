#pragma once

// Measures how fast the processor runs, for systems that do not note it down when they start.

#include "objects/sysinfo/processor/SpeedEstimate.h"

#include <cstdint>
#include <optional>

namespace tervane {

// What the speed of a processor is measured with. Tests run processors of their own here.
class ProcessorClock {
public:
    // This machine's.
    static ProcessorClock& System();

    virtual ~ProcessorClock() = default;
    // 3 for a 386, 4 for a 486, and so on.
    virtual int Family() = 0;
    virtual bool HasCycleCounter() = 0;
    // Only where there is one. May fault where the system forbids programs to read it.
    virtual std::int64_t Cycles() = 0;
    // How often the other clock ticks in a second; 0 when there is none.
    virtual std::int64_t TickFrequency() = 0;
    virtual std::int64_t Ticks() = 0;
    // Goes round a loop of two instructions, counting down and jumping back.
    virtual void Loop(long rounds) = 0;
};

// On the calling thread, which is raised above all others meanwhile; takes some milliseconds. All
// figures are 0 where nothing can be measured: no clock, a clock that stands still, or a processor
// of which too little is known. May fault, see ProcessorClock.
SpeedResult MeasureSpeed(ProcessorClock& clock);

// In MHz, on a thread of its own. -1 when that could not be started or has not ended in
// `limitSeconds` (no limit without); 0 after a fault and for a negative result. `clock` must live
// as long as the process. Throws std::bad_alloc.
long MeasureSpeedOnThread(ProcessorClock& clock,
                          std::optional<unsigned long> limitSeconds = std::nullopt);

} // namespace tervane
