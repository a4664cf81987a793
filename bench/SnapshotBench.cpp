#include "bench/SnapshotBench.h"

#include <winsock2.h>

#include "ZelBase/Handles.h"
#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "platform/registry/RegistryKey.h"

#include <string>
#include <vector>

#include <iphlpapi.h>
#include <setupapi.h>

namespace bench {
namespace {

constexpr GUID kNetworkClass = {
    0x4D36E972, 0xE325, 0x11CE, {0xBF, 0xC1, 0x08, 0x00, 0x2B, 0xE1, 0x03, 0x18}};
const std::wstring kServices = L"System\\CurrentControlSet\\Services\\";

tervane::UniqueRegistryKey Open(HKEY parent, const std::wstring& path) {
    tervane::UniqueRegistryKey key;
    RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, key.Put());
    return key;
}

void Query(const tervane::UniqueRegistryKey& key, const wchar_t* name, void* data = nullptr,
           DWORD size = 0) {
    BYTE buffer[1024];
    DWORD room = data ? size : sizeof(buffer);
    RegQueryValueExW(key.Get(), name, nullptr, nullptr, data ? static_cast<BYTE*>(data) : buffer,
                     &room);
}

void AskSetup(DWORD flags, bool properties) {
    const HDEVINFO devices = SetupDiGetClassDevsA(&kNetworkClass, nullptr, nullptr, flags);
    SP_DEVINFO_DATA device = {};
    device.cbSize = sizeof(device);
    for (DWORD index = 0; SetupDiEnumDeviceInfo(devices, index, &device); ++index) {
        char text[1024];
        SetupDiGetDeviceInstanceIdA(devices, &device, text, sizeof(text), nullptr);
        for (const DWORD property :
             {SPDRP_DEVICEDESC, SPDRP_SERVICE, SPDRP_CONFIGFLAGS, SPDRP_DRIVER}) {
            if (properties) {
                SetupDiGetDeviceRegistryPropertyA(devices, &device, property, nullptr,
                                                  reinterpret_cast<BYTE*>(text), sizeof(text),
                                                  nullptr);
            }
        }
    }
    SetupDiDestroyDeviceInfoList(devices);
}

void AskDriver(const std::string& device) {
    char target[1024];
    QueryDosDeviceA(device.c_str(), target, sizeof(target));
    const ZelBase::UniqueFile driver(CreateFileA(("\\\\.\\" + device).c_str(), GENERIC_READ,
                                                 FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                                 OPEN_EXISTING, 0, nullptr));
    DWORD object = 0x01010102;
    BYTE address[1024];
    DWORD size = 0;
    if (driver) {
        DeviceIoControl(driver.Get(), 0x170002, &object, sizeof(object), address, sizeof(address),
                        &size, nullptr);
    }
}

void ReadAdapterSettings(const std::wstring& device) {
    const auto settings =
        Open(HKEY_LOCAL_MACHINE, kServices + L"Tcpip\\Parameters\\Interfaces\\" + device);
    for (const wchar_t* name : {L"EnableDHCP", L"IPAddress", L"SubnetMask", L"DefaultGateway",
                                L"Domain", L"NameServer", L"NameServerList"}) {
        Query(settings, name);
    }
    Query(Open(HKEY_LOCAL_MACHINE, kServices + L"NetBT\\Parameters\\Interfaces\\Tcpip_" + device),
          L"NameServerList");
    Query(Open(HKEY_LOCAL_MACHINE, kServices + device + L"\\Linkage"), L"Bind");
}

void ListInstalledAdapters() {
    AskSetup(DIGCF_PRESENT, false);
    AskSetup(0, true);
    Query(Open(HKEY_LOCAL_MACHINE, kServices + L"Tcpip\\Linkage"), L"Bind");
    const auto cards =
        Open(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards");
    wchar_t name[256];
    DWORD size = std::size(name);
    for (DWORD index = 0; RegEnumKeyExW(cards.Get(), index, name, &size, nullptr, nullptr, nullptr,
                                        nullptr) == ERROR_SUCCESS;
         ++index, size = std::size(name)) {
        const auto card = Open(cards.Get(), name);
        wchar_t device[256] = {};
        Query(card, L"ServiceName", device, sizeof(device) - sizeof(wchar_t));
        Query(card, L"Description");
        ReadAdapterSettings(device);
        AskDriver(std::string(device, device + wcslen(device)));
    }
}

void AskNetwork() {
    std::vector<BYTE> table(65536);
    ULONG size = static_cast<ULONG>(table.size());
    GetAdaptersInfo(reinterpret_cast<IP_ADAPTER_INFO*>(table.data()), &size);
    size = static_cast<ULONG>(table.size());
    GetNetworkParams(reinterpret_cast<FIXED_INFO*>(table.data()), &size);
}

void AskProcessor() {
    const auto processor =
        Open(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0");
    for (const wchar_t* name : {L"~MHz", L"VendorIdentifier", L"Identifier"}) {
        Query(processor, name);
    }
    SYSTEM_INFO system;
    GetSystemInfo(&system);
}

void AskDrives() {
    ULARGE_INTEGER available = {};
    ULARGE_INTEGER total = {};
    const auto space = [&](char letter) {
        const char root[] = {letter, ':', '\\', '\0'};
        return GetDiskFreeSpaceExA(root, &available, &total, nullptr);
    };
    char folder[MAX_PATH];
    GetWindowsDirectoryA(folder, sizeof(folder));
    space(folder[0]);
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const char root[] = {letter, ':', '\\', '\0'};
        const UINT type = GetDriveTypeA(root);
        // The one for its class, the other for its free space.
        if (type == DRIVE_NO_ROOT_DIR || type == DRIVE_FIXED) {
            space(letter);
        }
    }
}

void AskSystem() {
    for (int number = 0; number < 10; ++number) {
        const ZelBase::UniqueFile controller(
            CreateFileA(("\\\\.\\HCD" + std::to_string(number)).c_str(), GENERIC_WRITE,
                        FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    }
    MEMORYSTATUS memory = {};
    GlobalMemoryStatus(&memory);
    OSVERSIONINFOEXA version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&version));
    Query(Open(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"),
          L"CurrentBuildNumber");
}

} // namespace

void CompareSnapshot() {
    LateBound keepLoaded(L"Ostrel.GeneralSysInfo");
    Compare(
        {"snapshot of GeneralSysInfo : the bare calls", 1.15, 3},
        [] {
            if (LateBound(L"Ostrel.GeneralSysInfo").Get(L"OS").Text().empty()) {
                Fail("gathering the facts of the machine", E_UNEXPECTED);
            }
        },
        [] {
            ListInstalledAdapters();
            AskNetwork();
            AskProcessor();
            AskSystem();
            AskDrives();
        });
}

} // namespace bench
