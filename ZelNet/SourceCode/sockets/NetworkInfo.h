#pragma once

// What this computer knows about its network, and the look-up of names with it.

#include "ZelNet/SourceCode/IpAddress.h"

#include <memory>
#include <string>
#include <vector>

namespace ZelNet {

class NetworkInfo {
public:
    // Null when the system cannot provide one.
    static std::unique_ptr<NetworkInfo> Create();

    virtual ~NetworkInfo() = default;

    // Looks the addresses of `name` up and waits for at most `timeoutMs`. The caller holds a
    // reference on the sockets (InitializeSockets) and is not on a socket event thread.
    // A given server is asked alone. With an empty one all servers of the network parameters are
    // asked at once; when there are none, or without a time-out (0), the system's resolver answers
    // in its own time. False when no answer came; true with no results means that the servers
    // know no address.
    virtual bool DNSLookup(const std::string& server, const std::string& name,
                           std::uint32_t timeoutMs, std::vector<IpAddress>& results) = 0;

    // The dotted addresses of the name servers, the computer's name and its domain, from the
    // network parameters; empty when unknown.
    virtual std::vector<std::string> DnsServers() = 0;
    virtual std::string HostName() = 0;
    virtual std::string DomainName() = 0;

protected:
    NetworkInfo() = default;
    NetworkInfo(const NetworkInfo&) = delete;
    NetworkInfo& operator=(const NetworkInfo&) = delete;
};

} // namespace ZelNet
