#pragma once

// A UDP socket that never blocks; see ATcpNonBlockingClientSocket for what both have in common.

#include "ZelNet/SourceCode/IpAddress.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ZelNet {

// What a user of a UDP socket is told; see TcpNonBlockingSocketListener for the rules.
class UdpNonBlockingSocketListener {
public:
    virtual void OnClose(void* context, int error) = 0;
    // There is a datagram to receive.
    virtual void OnReceive(void* context, int error) = 0;
    // Datagrams can be sent: comes at least once after the socket has been opened, and when there
    // is room again after a send that was refused.
    virtual void OnSend(void* context, int error) = 0;

protected:
    ~UdpNonBlockingSocketListener() = default;
};

class UdpNonBlockingClientSocket {
public:
    // A new socket, not open yet; null when the system cannot provide one. Releasing it closes it.
    static std::shared_ptr<UdpNonBlockingClientSocket> Create();

    virtual bool Create(UdpNonBlockingSocketListener* listener, std::uint16_t localPort,
                        const IpAddress& localAddress) = 0;
    virtual bool Bind(std::uint16_t port, const IpAddress& address) = 0;
    // Sends one datagram to a dotted address; host names are not resolved here. The number of bytes
    // sent, 0 on failure.
    virtual std::uint32_t SendTo(const std::string& address, std::uint16_t port, const void* data,
                                 std::uint32_t size) = 0;
    // Takes one datagram and where it came from. The number of bytes; 0 when there is none, and
    // when it does not fit.
    virtual std::uint32_t ReceiveFrom(void* buffer, std::uint32_t size, IpAddress& address,
                                      std::uint16_t& port) = 0;
    virtual bool Close(bool fromEvent) = 0;
    virtual void SetContext(void* context) = 0;

protected:
    ~UdpNonBlockingClientSocket() = default;
};

} // namespace ZelNet
