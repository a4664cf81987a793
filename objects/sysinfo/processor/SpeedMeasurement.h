#pragma once

// Measures how fast the processor runs, for systems that do not note it down when they start.

#include "objects/sysinfo/processor/ProcessorClock.h"
#include "objects/sysinfo/processor/SpeedEstimate.h"

#include <optional>

namespace tervane {

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
