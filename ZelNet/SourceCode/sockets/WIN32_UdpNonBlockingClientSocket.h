#pragma once

#include "ZelNet/SourceCode/sockets/UdpNonBlockingClientSocket.h"
#include "ZelNet/SourceCode/sockets/WIN32_NonBlockingSocket.h"

namespace ZelNet {

class WIN32_UdpNonBlockingClientSocket final : public UdpNonBlockingClientSocket,
                                               public WIN32_NonBlockingSocket {
public:
    WIN32_UdpNonBlockingClientSocket();

    bool Create(UdpNonBlockingSocketListener* listener, std::uint16_t localPort,
                const IpAddress& localAddress) override;
    bool Bind(std::uint16_t port, const IpAddress& address) override;
    std::uint32_t SendTo(const std::string& address, std::uint16_t port, const void* data,
                         std::uint32_t size) override;
    std::uint32_t ReceiveFrom(void* buffer, std::uint32_t size, IpAddress& address,
                              std::uint16_t& port) override;
    bool Close(bool fromEvent) override;
    void SetContext(void* context) override;

    // Datagram sockets neither accept nor connect.
    void OnAccept(int) override {}
    void OnConnect(int) override {}
    void FinishConnect(std::uint32_t) override {}
    void OnClose(int error) override;
    void OnReceive(int error) override;
    void OnSend(int error) override;

private:
    void ForgetListener() override ZELBASE_REQUIRES(mutex_) { listener_ = nullptr; }

    UdpNonBlockingSocketListener* listener_ ZELBASE_GUARDED_BY(mutex_) = nullptr;
};

} // namespace ZelNet
