#pragma once

// What the device installation of Windows 2000 and later knows of network adapters, asked through
// SETUPAPI.DLL. The library is optional: without it nothing is known.

#include <windows.h>

#include <cfgmgr32.h>

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tervane {

// The functions by which a program names a device, talks to its driver and learns how it is, as a
// table; tests replace it to get drivers that this machine has not.
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

// How the running system finds a device that is plugged in.
struct DeviceState {
    // False when it could not be started, for whatever reason but this one:
    bool works = false;
    bool isDisabled = false;
};

struct NetworkDevice {
    // Its place in the device tree, "PCI\VEN_8086&DEV_1229\4&1A2B".
    std::wstring instance;
    std::wstring description;
    std::wstring service;
    // CONFIGFLAG_ constants of the registry.
    DWORD configFlags = 0;
    // Nothing where the system cannot be asked or does not know the device.
    std::optional<DeviceState> state;
    // Whether a device without a state is plugged in, as far as the installation can tell.
    bool isPresent = false;
};

class NetworkDevices {
public:
    // Every network device that was ever installed and not removed. Any thread.
    static NetworkDevices Read(const DeviceApi& deviceApi = DeviceApi::System());

    // Null when there is none. `driverKey` names the device's key below the class keys:
    // "{4D36E972-E325-11CE-BFC1-08002BE10318}\0007", in any case.
    const NetworkDevice* Find(std::wstring_view driverKey) const;

private:
    std::unordered_map<std::wstring, NetworkDevice> byDriverKey_;
};

} // namespace tervane
