#pragma once

// What the speed of a processor is measured with. Tests run processors of their own here.

#include <cstdint>

namespace tervane {

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

} // namespace tervane
