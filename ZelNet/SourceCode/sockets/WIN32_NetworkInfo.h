#pragma once

#include "ZelBase/log/Logger.h"
#include "ZelNet/SourceCode/IpHelper.h"
#include "ZelNet/SourceCode/sockets/ADns.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"
#include "ZelNet/SourceCode/sockets/NetworkParameters.h"

namespace ZelNet {

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
