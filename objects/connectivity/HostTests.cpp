#include "objects/connectivity/HostTests.h"

#include "ZelNet/SourceCode/APing.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"

#include <cstring>
#include <optional>
#include <vector>

#include <winsock2.h>

namespace tervane {
namespace {

constexpr std::uint8_t kTimeToLive = 128;
constexpr int kDataSize = 10;

// The first address of a name, or of the text of one. "255.255.255.255" is taken for a name,
// because inet_addr answers for it what it answers for no address.
std::optional<ZelNet::IpAddress> AddressOf(const std::string& name) {
    const unsigned long address = inet_addr(name.c_str());
    if (address != INADDR_NONE) {
        return ZelNet::IpAddress(address);
    }
    const hostent* host = gethostbyname(name.c_str());
    if (!host || !host->h_addr_list[0] || host->h_length != sizeof(std::uint32_t)) {
        return std::nullopt;
    }
    std::uint32_t first = 0;
    std::memcpy(&first, host->h_addr_list[0], sizeof first);
    return ZelNet::IpAddress(first);
}

} // namespace

bool CanResolve(const std::string& name, std::uint32_t timeoutMs) {
    if (name.empty()) {
        return false;
    }
    if (timeoutMs == 0) {
        return gethostbyname(name.c_str()) != nullptr;
    }
    const auto network = ZelNet::NetworkInfo::Create();
    std::vector<ZelNet::IpAddress> addresses;
    return network && network->DNSLookup("", name, timeoutMs, addresses) && !addresses.empty();
}

bool AnswersPing(const std::string& name, std::uint16_t timeoutMs, long attempts) {
    if (name.empty()) {
        return false;
    }
    const auto address = AddressOf(name);
    const auto ping = address ? ZelNet::APing::Create() : nullptr;
    if (!ping) {
        return false;
    }
    for (long attempt = 0; attempt < attempts; ++attempt) {
        ZelNet::IpAddress reply;
        std::uint32_t roundTripMs = 0;
        const int result =
            ping->Ping(*address, reply, roundTripMs, timeoutMs, kTimeToLive, kDataSize);
        if (result >= 0 && reply == *address) {
            return true;
        }
    }
    return false;
}

} // namespace tervane
