#pragma once

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

} // namespace ZelNet
