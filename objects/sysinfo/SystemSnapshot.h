#pragma once

// Everything that is known of the machine, as it was at one moment. Each figure that cannot be
// found keeps the value given here; none keeps another from being found.

#include "objects/sysinfo/UsbPorts.h"
#include "platform/adapters/LiveAdapter.h"
#include "platform/adapters/StaticAdapter.h"

#include <optional>
#include <string>
#include <vector>

namespace tervane {

struct SystemSnapshot {
    std::vector<StaticAdapter> staticAdapters;
    std::vector<LiveAdapter> liveAdapters;
    std::wstring hostName;
    std::wstring domainName;
    // Joined by ",".
    std::wstring dnsServers;

    long cpuSpeed = -1; // MHz
    std::wstring cpuVendor;
    std::wstring cpuDescription;
    // A decimal number.
    std::wstring cpuFamily;

    bool usbSupported = false;
    long usbPorts = 0;
    long openUsbPorts = 0;

    // Sizes in MB.
    long ramSize = 0;
    // The letters of the drives; an index below is a place in it, -1 for none.
    std::string driveLetters;
    long systemDriveIndex = -1;
    long systemDriveTotalSize = 0;
    long systemDriveFreeSpace = 0;
    // Of the hard drives; of several with as much, the first.
    long largestFreeDriveIndex = -1;
    long largestFreeDriveSpace = 0;

    long osMajorNumber = -1;
    long osMinorNumber = -1;
    long osBuildNumber = -1;
    std::wstring os = L"error";
};

// Gathers it all, which may take seconds. `driveLetters` are those of an earlier snapshot, which
// are kept; nullopt to look for the drives. Any thread; throws std::bad_alloc.
SystemSnapshot GatherSystemSnapshot(const std::optional<std::string>& driveLetters,
                                    const UsbApi& usb = UsbApi::System());

// A figure of the size that scripts take.
long ToScriptNumber(unsigned long long number) noexcept;

} // namespace tervane
