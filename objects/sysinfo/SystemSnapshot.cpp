#include "objects/sysinfo/SystemSnapshot.h"

#include "objects/sysinfo/Drives.h"
#include "objects/sysinfo/NetworkIdentity.h"
#include "objects/sysinfo/OsRelease.h"
#include "objects/sysinfo/UsbPorts.h"
#include "objects/sysinfo/processor/ProcessorFacts.h"
#include "platform/adapters/LiveAdapterSources.h"
#include "platform/registry/RegistryKey.h"
#include "platform/text/LetterCase.h"

#include <algorithm>
#include <climits>
#include <cwchar>

namespace tervane {
namespace {

std::wstring Join(const std::vector<std::wstring>& texts) {
    std::wstring joined;
    for (const std::wstring& text : texts) {
        joined += joined.empty() ? text : L"," + text;
    }
    return joined;
}

void FillNetwork(PlatformFamily family, SystemSnapshot& snapshot) {
    snapshot.staticAdapters = ListStaticAdapters();
    LiveAdapterSources sources = LiveAdapterSources::System();
    sources.installed = [&snapshot] { return snapshot.staticAdapters; }; // not found out twice
    snapshot.liveAdapters = ListLiveAdapters(sources).value_or(std::vector<LiveAdapter>());
    const auto identity = ReadNetworkIdentity(*sources.ipHelper, family, snapshot.staticAdapters);
    snapshot.hostName = identity.hostName;
    snapshot.domainName = identity.domainName;
    snapshot.dnsServers = Join(identity.dnsServers);
}

void FillProcessor(SystemSnapshot& snapshot) {
    snapshot.cpuSpeed = ProcessorSpeed();
    snapshot.cpuVendor = ProcessorVendor();
    snapshot.cpuDescription = ProcessorDescription();
    snapshot.cpuFamily = DecimalText(ProcessorFamily());
}

void FillUsb(PlatformFamily family, const UsbApi& usb, SystemSnapshot& snapshot) {
    const UsbPorts ports = CountUsbPorts(family, usb).value_or(UsbPorts());
    snapshot.usbPorts = ports.ports;
    snapshot.openUsbPorts = ports.ports - ports.connected;
    snapshot.usbSupported = IsUsbSupported(family, ports.ports, usb);
}

long RamSize() {
    MEMORYSTATUS memory = {};
    memory.dwLength = sizeof memory;
    GlobalMemoryStatus(&memory);
    // What the firmware keeps for itself makes the last megabyte incomplete.
    return ToScriptNumber((memory.dwTotalPhys >> 20) + 1);
}

long BuildNumber(PlatformFamily family) {
    if (Is9xFamily(family)) {
        return -1;
    }
    const auto number = RegistryKey::Open(RegistryHive::kLocalMachine,
                                          L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion")
                            .ReadText(L"CurrentBuildNumber");
    return number ? std::wcstol(number->c_str(), nullptr, 10) : -1;
}

void FillSystem(PlatformFamily family, SystemSnapshot& snapshot) {
    const auto version = CurrentVersion();
    if (version) {
        snapshot.osMajorNumber = static_cast<long>(version->major);
        snapshot.osMinorNumber = static_cast<long>(version->minor);
    }
    snapshot.osBuildNumber = BuildNumber(family);
    snapshot.os = OsCode(ClassifyOs(version));
}

} // namespace

SystemSnapshot GatherSystemSnapshot(const std::optional<std::string>& driveLetters,
                                    const UsbApi& usb) {
    const PlatformFamily family = CurrentPlatformFamily();
    const Drives drives;
    SystemSnapshot snapshot;
    FillNetwork(family, snapshot);
    FillProcessor(snapshot);
    FillUsb(family, usb, snapshot);
    snapshot.ramSize = RamSize();
    snapshot.driveLetters = driveLetters ? *driveLetters : drives.Letters();
    FillDriveFigures(drives, snapshot);
    FillSystem(family, snapshot);
    return snapshot;
}

long ToScriptNumber(unsigned long long number) noexcept {
    return static_cast<long>(std::min<unsigned long long>(number, LONG_MAX));
}

} // namespace tervane
