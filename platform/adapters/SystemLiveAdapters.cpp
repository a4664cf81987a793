// The live adapters of this machine.

#include "platform/adapters/LiveAdapterSources.h"
#include "platform/registry/RegistryKey.h"

namespace tervane {
namespace {

// Where the DHCP client notes whom it has its lease from: Windows 2000 and later, Windows NT 4.
std::wstring LeaseServerInRegistry(const StaticAdapter& adapter) {
    const std::wstring services = L"System\\CurrentControlSet\\Services\\";
    for (const std::wstring& path : {services + L"Tcpip\\Parameters\\Interfaces\\" + adapter.cookie,
                                     services + adapter.serviceName + L"\\Parameters\\Tcpip"}) {
        const auto key = RegistryKey::Open(RegistryHive::kLocalMachine, path);
        if (const auto server = key.ReadText(L"DhcpServer")) {
            return *server;
        }
    }
    return {};
}

} // namespace

LiveAdapterSources LiveAdapterSources::System() {
    return {ZelNet::IpHelper::Load(), [] { return ZelNet::SnmpQuery::Create(); },
            [] { return ListStaticAdapters(); }, &LeaseServerInRegistry};
}

std::optional<std::vector<LiveAdapter>> ListLiveAdapters() {
    return ListLiveAdapters(LiveAdapterSources::System());
}

} // namespace tervane
