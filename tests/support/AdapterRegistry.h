#pragma once

// The registries of computers with network adapters, as the setup of Windows leaves them, below
// scratch hives. Tests change what they are about.

#include "platform/adapters/StaticAdapter.h"
#include "tests/support/ScratchRegistry.h"

#include <string>
#include <vector>

namespace tervane::test {

// The hives in which adapters are described; nothing reaches the real ones.
class AdapterHives {
public:
    ScratchHive machine{RegistryHive::kLocalMachine};
    ScratchHive profile{RegistryHive::kCurrentConfig};
    ScratchHive running{RegistryHive::kDynamicData};
};

inline constexpr wchar_t kNetworkClass[] = L"{4D36E972-E325-11CE-BFC1-08002BE10318}";
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
inline void AddNtCard(const AdapterHives& hives, const NtCard& card) {
    const std::wstring driverKey = std::wstring(kNetworkClass) + L"\\" + card.number;
    if (card.isListedAsCard) {
        hives.machine.Fill(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\",
                           card.number + L": ServiceName=" + card.instance + L"; Description=" +
                               card.description);
    }
    hives.machine.Fill(L"System\\CurrentControlSet\\Control\\Class\\",
                       driverKey + L": NetCfgInstanceId=" + card.instance + L"; DriverDesc=" +
                           card.description);
    if (!card.device.empty()) {
        hives.machine.Fill(L"System\\CurrentControlSet\\Enum\\",
                           card.device + L": Class=Net; ClassGUID=" + kNetworkClass +
                               L"; DeviceDesc=" + card.description + L"; Driver=" + driverKey +
                               L"; Service=" + card.service + L"; ConfigFlags=#0");
    }
    hives.machine.Create(kInterfaces + card.instance);
}

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
inline void AddOldCard(const AdapterHives& hives, const OldCard& card) {
    hives.machine.Fill(L"Enum\\", card.place + L": Class=Net; DeviceDesc=" + card.description +
                                      L"; Driver=Net\\" + card.number + L"; HardwareID=" +
                                      card.hardwareId);
    hives.machine.Fill(kServices, L"Class\\Net\\" + card.number + L": DeviceVxDs=" + card.driver);
    if (card.tcpip.empty()) {
        return;
    }
    hives.machine.Fill(L"Enum\\", card.place + L"\\Bindings: MSTCP\\" + card.tcpip + L"=\n" +
                                      L"Network\\MSTCP\\" + card.tcpip + L": Driver=NetTrans\\" +
                                      card.tcpip);
    hives.machine.Fill(kServices,
                       L"Class\\NetTrans\\" + card.tcpip + L": IPAddress=0.0.0.0; IPMask=0.0.0.0");
}
// As the system does while the device runs.
inline void SetProblem(const AdapterHives& hives, const std::wstring& place, DWORD problem) {
    std::wstring name = place;
    for (wchar_t& letter : name) {
        letter = letter == L'\\' ? L'_' : letter;
    }
    const RegistryKey running = hives.running.Create(L"Config Manager\\Enum\\" + name);
    running.WriteText(L"HardWareKey", place);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&problem);
    running.WriteBytes(L"Problem", {bytes, sizeof(problem)});
}

// The settings of an adapter in one line: "10.0.0.9 255.0.0.0 10.0.0.1 dhcp dns 10.0.0.2,10.0.0.3
// wins 10.0.0.4", with "static dns" for name servers of its own and "dhcp" only where it is on.
inline std::wstring SettingsOf(const StaticAdapter& adapter) {
    const auto list = [](const wchar_t* name, const std::vector<std::wstring>& servers) {
        std::wstring text;
        for (const std::wstring& server : servers) {
            text += (text.empty() ? name : L",") + server;
        }
        return text;
    };
    return adapter.ipAddress + L" " + adapter.subnetMask + L" " + adapter.defaultGateway +
           (adapter.usingDhcp ? L" dhcp" : L"") + (adapter.isDnsStatic ? L" static" : L"") +
           list(L" dns ", adapter.nameServers) + list(L" wins ", adapter.winsServers);
}

} // namespace tervane::test
