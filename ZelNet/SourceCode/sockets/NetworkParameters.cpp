#include "ZelNet/SourceCode/sockets/NetworkParameters.h"

namespace ZelNet {
namespace {

constexpr int kMostServers = 256;

} // namespace

std::optional<NetworkParameters> ReadNetworkParameters(const IpHelper& ipHelper) {
    const IpHelperTable<FIXED_INFO> table([&](FIXED_INFO* parameters, ULONG* size) {
        return ipHelper.GetNetworkParams(parameters, size);
    });
    const FIXED_INFO* values = table.Get();
    if (!values) {
        return std::nullopt;
    }
    NetworkParameters parameters{
        std::string(TextIn(values->HostName)), std::string(TextIn(values->DomainName)), {}};
    const IP_ADDR_STRING* server = &values->DnsServerList;
    for (int number = 0; server && number < kMostServers; ++number, server = server->Next) {
        if (const std::string_view address = TextIn(server->IpAddress.String); !address.empty()) {
            parameters.dnsServers.emplace_back(address);
        }
    }
    return parameters;
}

} // namespace ZelNet
