#include "objects/sysinfo/processor/ProcessorFacts.h"

#include "objects/sysinfo/processor/BoundedThread.h"
#include "objects/sysinfo/processor/ProcessorIdentity.h"
#include "objects/sysinfo/processor/SpeedMeasurement.h"
#include "platform/registry/RegistryKey.h"

#include <memory>

namespace tervane {
namespace {

constexpr DWORD kVendorPatience = 5000; // ms

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
        kVendorPatience);
    return end == BoundedEnd::kEnded ? *vendor : std::wstring();
}

std::wstring ProcessorDescription() {
    return OpenProcessor().ReadText(L"Identifier").value_or(std::wstring());
}

} // namespace tervane
