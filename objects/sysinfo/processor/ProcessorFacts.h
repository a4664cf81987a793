#pragma once

// What is known of the first processor: what the system noted down in the registry when it started
// and, where that is missing, what the processor itself tells. Each figure stands for itself.

#include <string>

namespace tervane {

// What the processor says of itself, by the instruction that processors have for that since the
// later 486s.
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

// In MHz; -1 or 0 when it can neither be read nor measured, see MeasureSpeedOnThread.
long ProcessorSpeed();
// Such as "GenuineIntel"; empty when neither the system nor the processor tells within five
// seconds.
std::wstring ProcessorVendor();
// Such as "x86 Family 6 Model 8 Stepping 3"; empty when the system does not tell.
std::wstring ProcessorDescription();

} // namespace tervane
