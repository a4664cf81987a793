#pragma once

// What is known of the first processor: what the system noted down in the registry when it started
// and, where that is missing, what the processor itself tells. Each figure stands for itself.

#include <string>

namespace tervane {

// In MHz; -1 or 0 when it can neither be read nor measured, see MeasureSpeedOnThread.
long ProcessorSpeed();
// Such as "GenuineIntel"; empty when neither the system nor the processor tells within five
// seconds.
std::wstring ProcessorVendor();
// Such as "x86 Family 6 Model 8 Stepping 3"; empty when the system does not tell.
std::wstring ProcessorDescription();

} // namespace tervane
