#include "ZelNet/SourceCode/sockets/NetworkInfo.h"

#include "ZelBase/threads/Event.h"
#include "ZelNet/SourceCode/ComponentLogger.h"

#include <cstring>

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

using ZelBase::LogLevel;

// One look-up under way. It lives until the callback has been called, which happens exactly once.
struct WIN32_NetworkInfo::LookUp {
    ZelBase::Logger* logger;
    std::unique_ptr<ZelBase::Event> done;
    bool success = false;
    std::vector<DnsRecord> records;
};

std::unique_ptr<NetworkInfo> NetworkInfo::Create() {
    return Create(IpHelper::Load());
}

std::unique_ptr<NetworkInfo> NetworkInfo::Create(std::shared_ptr<const IpHelper> ipHelper) {
    auto network = std::make_unique<WIN32_NetworkInfo>(std::move(ipHelper));
    return network->IsValid() ? std::move(network) : nullptr;
}

WIN32_NetworkInfo::WIN32_NetworkInfo() : WIN32_NetworkInfo(IpHelper::Load()) {}

WIN32_NetworkInfo::WIN32_NetworkInfo(std::shared_ptr<const IpHelper> ipHelper)
    : logger_(CreateLogger("WIN32_NetworkInfo")), ipHelper_(std::move(ipHelper)) {}

bool WIN32_NetworkInfo::DNSLookup(const std::string& server, const std::string& name,
                                  std::uint32_t timeoutMs, std::vector<IpAddress>& results) {
    logger_->Log("DNSLookup", LogLevel::kTrace, "Server = %s, TimeOut = %lums", server.c_str(),
                 static_cast<unsigned long>(timeoutMs));
    results.clear();
    std::vector<std::string> servers;
    if (!server.empty()) {
        servers.push_back(server);
    } else if (timeoutMs != 0) {
        servers = FindServers();
    }
    const bool answered =
        servers.empty() ? AskSystem(name, results) : AskServers(servers, name, timeoutMs, results);
    for (const IpAddress& result : results) {
        logger_->Log("DNSLookup", LogLevel::kTrace, "Found %s", result.GetText().c_str());
    }
    return answered;
}

std::vector<std::string> WIN32_NetworkInfo::FindServers() {
    auto servers = DnsServers();
    if (!ADns::HasUsableServer(servers)) {
        logger_->Log("DNSLookup", LogLevel::kWarning, "Failed to find servers.");
        return {};
    }
    for (const std::string& server : servers) {
        logger_->Log("DNSLookup", LogLevel::kTrace, "Found Server %s.", server.c_str());
    }
    return servers;
}

bool WIN32_NetworkInfo::AskServers(const std::vector<std::string>& servers, const std::string& name,
                                   std::uint32_t timeoutMs, std::vector<IpAddress>& results) {
    LookUp lookUp{logger_.get(), ZelBase::Event::Create(), false, {}};
    const auto dns = ADns::Create();
    if (!lookUp.done || !dns || !dns->SetDnsServers(servers) ||
        !dns->ResolveName(name, &ADnsCallBack, &lookUp)) {
        return false;
    }
    if (!lookUp.done->Wait(timeoutMs, nullptr)) {
        logger_->Log("DNSLookup", LogLevel::kWarning, "Timed Out or got an Abort.");
        dns->Abort();
        // Now, or in the very moment before, the callback has been called.
        lookUp.done->Wait(nullptr);
    }
    for (const DnsRecord& record : lookUp.records) {
        if (record.type == kDnsTypeAddress) {
            results.push_back(record.address);
        }
    }
    return lookUp.success;
}

void WIN32_NetworkInfo::ADnsCallBack(bool success, void* parameter,
                                     const std::vector<DnsRecord>& records) {
    auto& lookUp = *static_cast<LookUp*>(parameter);
    lookUp.logger->Log("ADnsCallBack", LogLevel::kTrace, "Success = %s, pParam = %lx",
                       success ? "Ok" : "Failed", LogNumber(parameter));
    try {
        lookUp.records = records;
        lookUp.success = success;
    } catch (const std::bad_alloc&) { // a failure, but one that the waiting thread must hear of
    }
    lookUp.logger->Log("ADnsCallBack", LogLevel::kTrace, "Signaling ZelBase::Event.");
    lookUp.done->Set(); // from here on the look-up may be gone
}

bool WIN32_NetworkInfo::AskSystem(const std::string& name, std::vector<IpAddress>& results) {
    logger_->Log("DNSLookup", LogLevel::kTrace, "System Call is being performed.");
    const hostent* host = gethostbyname(name.c_str());
    if (!host || host->h_addrtype != AF_INET) {
        return false;
    }
    for (char** address = host->h_addr_list; *address; ++address) {
        std::uint32_t value = 0;
        std::memcpy(&value, *address, sizeof value);
        results.emplace_back(value);
    }
    return true;
}

std::vector<std::string> WIN32_NetworkInfo::DnsServers() {
    return Parameters().dnsServers;
}

std::string WIN32_NetworkInfo::HostName() {
    return Parameters().hostName;
}

std::string WIN32_NetworkInfo::DomainName() {
    return Parameters().domainName;
}

NetworkParameters WIN32_NetworkInfo::Parameters() const {
    return ReadNetworkParameters(*ipHelper_).value_or(NetworkParameters());
}

} // namespace ZelNet
