#pragma once

// What this computer knows about its network, and the look-up of names with it.

#include "ZelBase/log/Logger.h"
#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/IpHelper.h"
#include "ZelNet/SourceCode/sockets/ADns.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZelNet {

// What the running network calls this computer and whom it asks for names: the network parameters
// of the IP Helper library, as plain values.
struct NetworkParameters {
    // Empty when the network has none.
    std::string hostName;
    std::string domainName;
    // Dotted decimal, in the order in which they are asked; an empty list is what the system says.
    std::vector<std::string> dnsServers;
};

// Nothing when the library is missing or fails. Believes no text to be terminated and no list to
// end: a text is as long as its place at most, and the list is cut after 256 servers. Any thread.
// Throws std::bad_alloc.
std::optional<NetworkParameters> ReadNetworkParameters(const IpHelper& ipHelper);

class NetworkInfo {
public:
    // Null when the system cannot provide one.
    static std::unique_ptr<NetworkInfo> Create();
    // The same with a library that is loaded already: loading it anew costs a quarter of a look-up.
    static std::unique_ptr<NetworkInfo> Create(std::shared_ptr<const IpHelper> ipHelper);

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

class WIN32_NetworkInfo final : public NetworkInfo {
public:
    // With the system's network parameters, or with those of `ipHelper`.
    WIN32_NetworkInfo();
    explicit WIN32_NetworkInfo(std::shared_ptr<const IpHelper> ipHelper);

    bool IsValid() const { return static_cast<bool>(logger_); }
    bool DNSLookup(const std::string& server, const std::string& name, std::uint32_t timeoutMs,
                   std::vector<IpAddress>& results) override;
    std::vector<std::string> DnsServers() override;
    std::string HostName() override;
    std::string DomainName() override;

private:
    struct LookUp;

    std::vector<std::string> FindServers();
    bool AskServers(const std::vector<std::string>& servers, const std::string& name,
                    std::uint32_t timeoutMs, std::vector<IpAddress>& results);
    bool AskSystem(const std::string& name, std::vector<IpAddress>& results);
    static void ADnsCallBack(bool success, void* parameter, const std::vector<DnsRecord>& records);
    // Empty ones when they cannot be had.
    NetworkParameters Parameters() const;

    std::unique_ptr<ZelBase::Logger> logger_;
    std::shared_ptr<const IpHelper> ipHelper_;
};

} // namespace ZelNet
