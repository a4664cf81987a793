#include "platform/adapters/NtSettings.h"

#include "platform/adapters/TcpipKeys.h"
#include "platform/registry/RegistryList.h"

#include <utility>

namespace tervane {
namespace {

constexpr wchar_t kNetbtKey[] = L"System\\CurrentControlSet\\Services\\NetBT\\";

RegistryKey OpenMachine(const std::wstring& path) {
    return RegistryKey::Open(RegistryHive::kLocalMachine, path);
}

std::vector<std::wstring> ReadNameServers(const RegistryKey& key) {
    std::vector<std::wstring> servers = ReadList(key, L"NameServer");
    return servers.empty() ? ReadList(key, L"NameServerList") : servers;
}

} // namespace

NtSettings::NtSettings(PlatformFamily family)
    : isNt4_(family == PlatformFamily::kNt4), parameters_(OpenMachine(kTcpipParametersKey)),
      domain_(ReadTextOr(parameters_, L"Domain")),
      winsState_(static_cast<long>(
          ReadSwitch(OpenMachine(std::wstring(kNetbtKey) + L"Parameters"), L"NodeType")
              .value_or(0))) {}

void NtSettings::Read(StaticAdapter& adapter) const {
    RegistryKey settings;
    if (!adapter.serviceName.empty()) {
        adapter.settingsKey =
            isNt4_ ? TcpipServiceKey(adapter.serviceName) : TcpipInterfaceKey(adapter.serviceName);
        adapter.winsServers = ReadWinsServers(adapter.serviceName);
        settings = OpenMachine(adapter.settingsKey);
    }
    adapter.winsState = winsState_;
    adapter.usingDhcp = ReadSwitch(settings, L"EnableDHCP").value_or(0) != 0;
    adapter.ipAddress = ReadFirstAddress(settings, L"IPAddress");
    adapter.subnetMask = ReadFirstAddress(settings, L"SubnetMask");
    adapter.defaultGateway = ReadFirstAddress(settings, L"DefaultGateway");
    adapter.domainName = ReadTextOr(settings, L"Domain", domain_);
    adapter.nameServers = ReadNameServers(isNt4_ ? parameters_ : settings);
    adapter.isDnsStatic = !adapter.nameServers.empty();
}

std::vector<std::wstring> NtSettings::ReadWinsServers(const std::wstring& service) const {
    if (!isNt4_) {
        return ReadList(OpenMachine(kNetbtKey + (L"Parameters\\Interfaces\\Tcpip_" + service)),
                        L"NameServerList");
    }
    const RegistryKey adapter = OpenMachine(kNetbtKey + (L"Adapters\\" + service));
    std::vector<std::wstring> servers = ReadList(adapter, L"NameServer");
    for (std::wstring& backup : ReadList(adapter, L"NameServerBackup")) {
        servers.push_back(std::move(backup));
    }
    return servers;
}

} // namespace tervane
