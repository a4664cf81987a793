#include "objects/sysinfo/processor/ProcessorFacts.h"

#include "objects/sysinfo/processor/BoundedThread.h"
#include "objects/sysinfo/processor/SpeedMeasurement.h"
#include "platform/registry/RegistryKey.h"

#include <cpuid.h>

#include <windows.h>

#include <memory>

namespace tervane {
namespace {

constexpr unsigned kTimeStampCounter = 1U << 4;
constexpr int kPentium = 5;

void Append(std::wstring& text, unsigned characters) {
    for (int byte = 0; byte < 4; ++byte) {
        text.push_back(static_cast<wchar_t>(characters >> (8 * byte) & 0xFF));
    }
}

} // namespace

ProcessorIdentity ReadProcessorIdentity() {
    ProcessorIdentity identity;
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    // Tells by itself whether there is the instruction.
    if (!__get_cpuid(0, &eax, &ebx, &ecx, &edx)) {
        return identity;
    }
    Append(identity.vendor, ebx);
    Append(identity.vendor, edx);
    Append(identity.vendor, ecx);
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx)) {
        identity.family = static_cast<int>(eax >> 8 & 0xF);
        identity.hasTimeStampCounter = (edx & kTimeStampCounter) != 0;
    }
    return identity;
}

int ClassifyProcessorFamily(unsigned architecture, unsigned level, unsigned long type) noexcept {
    if (architecture == PROCESSOR_ARCHITECTURE_INTEL) {
        return level >= 3 && level < 100 ? static_cast<int>(level) : kPentium;
    }
    switch (type) {
    case PROCESSOR_INTEL_386:
        return 3;
    case PROCESSOR_INTEL_486:
        return 4;
    default:
        return kPentium;
    }
}

int ProcessorFamily() noexcept {
    SYSTEM_INFO system = {};
    GetSystemInfo(&system);
    return ClassifyProcessorFamily(system.wProcessorArchitecture, system.wProcessorLevel,
                                   system.dwProcessorType);
}

namespace {

constexpr DWORD kVendorPatienceMs = 5000;

RegistryKey OpenProcessor() {
    return RegistryKey::Open(RegistryHive::kLocalMachine,
                             L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0");
}

} // namespace

long ProcessorSpeed() {
    const RegistryKey processor = OpenProcessor();
    for (const wchar_t* name : {L"~MHz", L"~Mhz", L"~mhz"}) {
        if (const auto speed = processor.ReadNumber(name)) {
            return static_cast<long>(*speed);
        }
    }
    return MeasureSpeedOnThread(ProcessorClock::System());
}

std::wstring ProcessorVendor() {
    const auto vendor = std::make_shared<std::wstring>();
    const BoundedEnd end = RunBounded(
        [vendor] {
            const auto noted = OpenProcessor().ReadText(L"VendorIdentifier");
            *vendor = noted ? *noted : ReadProcessorIdentity().vendor;
        },
        kVendorPatienceMs);
    return end == BoundedEnd::kEnded ? *vendor : std::wstring();
}

std::wstring ProcessorDescription() {
    return OpenProcessor().ReadText(L"Identifier").value_or(std::wstring());
}

} // namespace tervane
