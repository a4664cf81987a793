#pragma once

// The functions by which a program names a device and talks to its driver, as a table; tests
// replace it to get drivers that this machine has not.

#include <windows.h>

namespace tervane {

struct DeviceApi {
    decltype(&QueryDosDeviceA) queryDosDevice;
    decltype(&DefineDosDeviceA) defineDosDevice;
    decltype(&CreateFileA) createFile;
    decltype(&DeviceIoControl) deviceIoControl;

    // The real ones. Under Wine no names can be defined: its function overruns its stack when the
    // name is longer than a drive's.
    static const DeviceApi& System() noexcept;
};

} // namespace tervane
