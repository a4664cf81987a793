#pragma once

// The functions by which a program names a device, talks to its driver and learns how it is, as a
// table; tests replace it to get drivers that this machine has not.

#include <windows.h>

#include <cfgmgr32.h>

namespace tervane {

struct DeviceApi {
    decltype(&QueryDosDeviceA) queryDosDevice;
    decltype(&DefineDosDeviceA) defineDosDevice;
    decltype(&CreateFileA) createFile;
    decltype(&DeviceIoControl) deviceIoControl;
    // Null for that of SETUPAPI.DLL, which older systems lack.
    decltype(&CM_Get_DevNode_Status) getDeviceStatus;

    // The real ones. Under Wine no names can be defined: its function overruns its stack when the
    // name is longer than a drive's.
    static const DeviceApi& System() noexcept;
};

} // namespace tervane
