#include "tests/support/AdapterRegistry.h"

namespace tervane::test {
namespace {

constexpr wchar_t kNetworkClass[] = L"{4D36E972-E325-11CE-BFC1-08002BE10318}";

} // namespace

void AddNtCard(const AdapterHives& hives, const NtCard& card) {
    const std::wstring driverKey = std::wstring(kNetworkClass) + L"\\" + card.number;
    if (card.isListedAsCard) {
        const RegistryKey entry = hives.machine.Create(
            L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\" + card.number);
        entry.WriteText(L"ServiceName", card.instance);
        entry.WriteText(L"Description", card.description);
    }
    const RegistryKey classKey =
        hives.machine.Create(L"System\\CurrentControlSet\\Control\\Class\\" + driverKey);
    classKey.WriteText(L"NetCfgInstanceId", card.instance);
    classKey.WriteText(L"DriverDesc", card.description);
    if (!card.device.empty()) {
        const RegistryKey device =
            hives.machine.Create(L"System\\CurrentControlSet\\Enum\\" + card.device);
        device.WriteText(L"Class", L"Net");
        device.WriteText(L"ClassGUID", kNetworkClass);
        device.WriteText(L"DeviceDesc", card.description);
        device.WriteText(L"Driver", driverKey);
        device.WriteText(L"Service", card.service);
        device.WriteNumber(L"ConfigFlags", 0);
    }
    hives.machine.Create(kInterfaces + card.instance);
}

void AddOldCard(const AdapterHives& hives, const OldCard& card) {
    const RegistryKey device = hives.machine.Create(L"Enum\\" + card.place);
    device.WriteText(L"Class", L"Net");
    device.WriteText(L"DeviceDesc", card.description);
    device.WriteText(L"Driver", L"Net\\" + card.number);
    device.WriteText(L"HardwareID", card.hardwareId);
    hives.machine.Create(std::wstring(kServices) + L"Class\\Net\\" + card.number)
        .WriteText(L"DeviceVxDs", card.driver);
    if (card.tcpip.empty()) {
        return;
    }
    hives.machine.Create(L"Enum\\" + card.place + L"\\Bindings")
        .WriteText(L"MSTCP\\" + card.tcpip, L"");
    hives.machine.Create(L"Enum\\Network\\MSTCP\\" + card.tcpip)
        .WriteText(L"Driver", L"NetTrans\\" + card.tcpip);
    const RegistryKey settings =
        hives.machine.Create(std::wstring(kServices) + L"Class\\NetTrans\\" + card.tcpip);
    settings.WriteText(L"IPAddress", L"0.0.0.0");
    settings.WriteText(L"IPMask", L"0.0.0.0");
}

void SetProblem(const AdapterHives& hives, const std::wstring& place, DWORD problem) {
    std::wstring name = place;
    for (wchar_t& letter : name) {
        letter = letter == L'\\' ? L'_' : letter;
    }
    const RegistryKey running = hives.running.Create(L"Config Manager\\Enum\\" + name);
    running.WriteText(L"HardWareKey", place);
    const auto* bytes = reinterpret_cast<const unsigned char*>(&problem);
    running.WriteBytes(L"Problem", {bytes, sizeof(problem)});
}

std::wstring SettingsOf(const StaticAdapter& adapter) {
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
