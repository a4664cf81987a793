#pragma once

// What the processor says of itself, by the instruction that processors have for that since the
// later 486s.

#include <string>

namespace tervane {

struct ProcessorIdentity {
    // Twelve characters such as "GenuineIntel"; empty for a processor without the instruction.
    std::wstring vendor;
    // 0 for a processor without the instruction.
    int family = 0;
    bool hasTimeStampCounter = false;
};

ProcessorIdentity ReadProcessorIdentity();

// The family as scripts are told it, from what the system says of the processor: one of the
// PROCESSOR_ARCHITECTURE_ numbers, the level, and one of the PROCESSOR_ types. Processors that are
// too new, or of another kind, count as family 5.
int ClassifyProcessorFamily(unsigned architecture, unsigned level, unsigned long type) noexcept;

// That of this machine.
int ProcessorFamily() noexcept;

} // namespace tervane
