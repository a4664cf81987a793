#include "objects/connectivity/HostProbes.h"

#include "ZelNet/SourceCode/APing.h"
#include "ZelNet/SourceCode/sockets/InitializeSockets.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"

#include <winsock2.h>

#include <cstring>
#include <optional>
#include <vector>

namespace tervane {

bool TcpConnectProbe::Run(const std::string& location, std::uint16_t port,
                          std::uint32_t timeoutMs) {
    const ZelNet::SocketLayerUse sockets;
    if (!sockets || !connected_) {
        return false;
    }
    socket_ = ZelNet::TcpNonBlockingClientSocket::Create();
    if (!socket_) {
        return false;
    }
    connected_->Reset();
    failed_ = true;
    Connect(location, port); // one that cannot even be started ends as a refused one does
    const bool inTime = connected_->Wait(timeoutMs, nullptr);
    const bool success = inTime && !failed_;
    socket_->Close(false);
    socket_.reset();
    return success;
}

bool TcpConnectProbe::Connect(const std::string& location, std::uint16_t port) {
    if (!socket_->Create(this, 0, ZelNet::IpAddress(), false)) {
        return false;
    }
    const ZelNet::IpAddress address(location);
    return address.IsValid() ? socket_->Connect(address, port) : socket_->Connect(location, port);
}

// The context is the socket. The probe's own pointer may be given up at this very moment, when the
// time runs out just as the connection is made.
void TcpConnectProbe::OnConnect(void* context, int error) {
    auto* socket = static_cast<ZelNet::TcpNonBlockingClientSocket*>(context);
    if (error == 0 && socket->IsConnected()) {
        failed_ = false;
        connected_->Set();
    }
}

void TcpConnectProbe::OnClose(void*, int) {}

void TcpConnectProbe::OnReceive(void*, int) {}

void TcpConnectProbe::OnSend(void*, int) {}

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

bool CanResolve(const std::string& name, std::uint32_t timeoutMs,
                std::shared_ptr<const ZelNet::IpHelper> ipHelper) {
    if (name.empty()) {
        return false;
    }
    if (timeoutMs == 0) {
        return gethostbyname(name.c_str()) != nullptr;
    }
    const auto network = ZelNet::NetworkInfo::Create(std::move(ipHelper));
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
