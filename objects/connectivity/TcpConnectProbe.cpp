#include "objects/connectivity/TcpConnectProbe.h"

#include "objects/connectivity/SocketLayerUse.h"

namespace tervane {

bool TcpConnectProbe::Run(const std::string& location, std::uint16_t port,
                          std::uint32_t timeoutMs) {
    const SocketLayerUse sockets;
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

} // namespace tervane
