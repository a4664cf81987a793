#pragma once

// A UDP socket that never blocks; see ATcpNonBlockingClientSocket for what both have in common.

#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/sockets/UdpNonBlockingSocketListener.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ZelNet {

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
