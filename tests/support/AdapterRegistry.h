#pragma once

// The registries of computers with network adapters, as the setup of Windows leaves them, below
// scratch hives. Tests change what they are about.

#include "platform/adapters/StaticAdapter.h"
#include "tests/support/ScratchRegistry.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace tervane::test {

// The hives in which adapters are described; nothing reaches the real ones.
class AdapterHives {
public:
    ScratchHive machine{RegistryHive::kLocalMachine};
    ScratchHive profile{RegistryHive::kCurrentConfig};
    ScratchHive running{RegistryHive::kDynamicData};
};

inline constexpr wchar_t kServices[] = L"System\\CurrentControlSet\\Services\\";
inline constexpr wchar_t kInterfaces[] =
    L"System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\";

// Windows 2000 and later: a card with its device, its class key and its settings.
struct NtCard {
    std::wstring instance;         // "{...}"
    std::wstring number = L"0000"; // of its class key
    std::wstring description;
    std::wstring device; // "PCI\VEN_8086&DEV_1229\4&1A2B"
    std::wstring service = L"E100B";
    bool isListedAsCard = true;
};
void AddNtCard(const AdapterHives& hives, const NtCard& card);

// The 9x family: a device with its class key and, unless `tcpip` is empty, an instance of TCP/IP
// with its class key.
struct OldCard {
    std::wstring place; // "PCI\VEN_10B7&DEV_9055\000800"
    std::wstring description;
    std::wstring number = L"0000"; // of its class key
    std::wstring driver;
    std::wstring hardwareId;
    std::wstring tcpip = L"0000"; // number of the instance of TCP/IP, and of its class key
};
void AddOldCard(const AdapterHives& hives, const OldCard& card);
// As the system does while the device runs.
void SetProblem(const AdapterHives& hives, const std::wstring& place, DWORD problem);

// The settings of an adapter in one line: "10.0.0.9 255.0.0.0 10.0.0.1 dhcp dns 10.0.0.2,10.0.0.3
// wins 10.0.0.4", with "static dns" for name servers of its own and "dhcp" only where it is on.
std::wstring SettingsOf(const StaticAdapter& adapter);

} // namespace tervane::test
