#include "objects/sysinfo/NetworkIdentity.h"

#include "platform/NarrowText.h"
#include "platform/RegistryKey.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_set>

namespace tervane {
namespace {

constexpr wchar_t kNtParameters[] = L"System\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr wchar_t k9xParameters[] = L"System\\CurrentControlSet\\Services\\VxD\\MSTCP";

// A text in an array of the library's, which need not be terminated.
template <size_t Size>
std::wstring TextIn(const char (&characters)[Size]) {
    const char* text = std::data(characters);
    return FromNarrow(std::string_view(text, strnlen(text, Size)));
}

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

NetworkIdentity FromLibrary(const ZelNet::IpHelper& ipHelper) {
    const ZelNet::IpHelperTable<FIXED_INFO> parameters(
        [&](FIXED_INFO* table, ULONG* size) { return ipHelper.GetNetworkParams(table, size); });
    NetworkIdentity identity;
    const FIXED_INFO* values = parameters.Get();
    if (!values) {
        return identity;
    }
    identity.hostName = TextIn(values->HostName);
    identity.domainName = TextIn(values->DomainName);
    ServerList servers(identity.dnsServers);
    for (const auto* server = &values->DnsServerList; server; server = server->Next) {
        servers.Add(TextIn(server->IpAddress.String));
    }
    return identity;
}

// Separated by blanks or commas.
void AddServers(ServerList& servers, std::wstring_view list) {
    constexpr std::wstring_view kSeparators = L" ,";
    for (size_t at = 0; at < list.size();) {
        const size_t end = std::min(list.find_first_of(kSeparators, at), list.size());
        servers.Add(std::wstring(list.substr(at, end - at)));
        at = end + 1;
    }
}

void AddSetServers(std::vector<std::wstring>& servers, const RegistryKey& parameters,
                   const std::vector<StaticAdapter>& adapters) {
    ServerList added(servers);
    AddServers(added, parameters.ReadText(L"NameServer").value_or(std::wstring()));
    if (!servers.empty()) {
        return;
    }
    for (const StaticAdapter& adapter : adapters) {
        for (const std::wstring& server : adapter.nameServers) {
            added.Add(server);
        }
    }
}

} // namespace

NetworkIdentity ReadNetworkIdentity(const ZelNet::IpHelper& ipHelper, PlatformFamily family,
                                    const std::vector<StaticAdapter>& adapters) {
    NetworkIdentity identity = FromLibrary(ipHelper);
    const auto parameters = RegistryKey::Open(RegistryHive::kLocalMachine,
                                              Is9xFamily(family) ? k9xParameters : kNtParameters);
    if (identity.hostName.empty()) {
        identity.hostName = parameters.ReadText(L"Hostname").value_or(std::wstring());
    }
    if (identity.domainName.empty()) {
        identity.domainName = parameters.ReadText(L"Domain").value_or(std::wstring());
    }
    if (identity.dnsServers.empty()) {
        AddSetServers(identity.dnsServers, parameters, adapters);
    }
    return identity;
}

} // namespace tervane
