#include "objects/sysinfo/NetworkIdentity.h"

#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "platform/adapters/TcpipKeys.h"
#include "platform/registry/RegistryList.h"
#include "platform/text/NarrowText.h"

#include <unordered_set>

namespace tervane {
namespace {

// Each server once, in the order in which they come.
class ServerList {
public:
    explicit ServerList(std::vector<std::wstring>& servers) noexcept : servers_(servers) {}

    void Add(const std::wstring& server) {
        if (!server.empty() && added_.insert(server).second) {
            servers_.push_back(server);
        }
    }

private:
    std::vector<std::wstring>& servers_;
    std::unordered_set<std::wstring> added_;
};

void AddSetServers(ServerList& servers, const RegistryKey& parameters,
                   const std::vector<StaticAdapter>& adapters) {
    const std::vector<std::wstring> forAll = ReadList(parameters, L"NameServer");
    for (const std::wstring& server : forAll) {
        servers.Add(server);
    }
    if (!forAll.empty()) {
        return;
    }
    for (const StaticAdapter& adapter : adapters) {
        // What is set for the others is not in use.
        if (!adapter.isEnabled || !adapter.boundIndirectlyOrDirectlyToTcpip) {
            continue;
        }
        for (const std::wstring& server : adapter.nameServers) {
            servers.Add(server);
        }
    }
}

} // namespace

NetworkIdentity ReadNetworkIdentity(const ZelNet::IpHelper& ipHelper, PlatformFamily family,
                                    const std::vector<StaticAdapter>& adapters) {
    const auto known = ZelNet::ReadNetworkParameters(ipHelper);
    const auto set = RegistryKey::Open(RegistryHive::kLocalMachine,
                                       Is9xFamily(family) ? kMstcpKey : kTcpipParametersKey);
    NetworkIdentity identity;
    ServerList servers(identity.dnsServers);
    if (known) {
        identity.hostName = FromNarrow(known->hostName);
        identity.domainName = FromNarrow(known->domainName);
        for (const std::string& server : known->dnsServers) {
            servers.Add(FromNarrow(server));
        }
    } else {
        AddSetServers(servers, set, adapters);
    }
    if (identity.hostName.empty()) {
        identity.hostName = ReadTextOr(set, L"Hostname");
    }
    if (identity.domainName.empty()) {
        identity.domainName = ReadTextOr(set, L"Domain");
    }
    return identity;
}

} // namespace tervane
