#pragma once

#include <cstdint>

namespace ZelNet {

// What a socket event thread calls, on its own thread and with the socket's slot locked. The
// argument of the network events is a Winsock error code. A callback must not block: up to four
// other sockets wait for it. It may remove the socket from the thread.
class WIN32_SocketEventThreadListener {
public:
    virtual void OnAccept(int error) = 0;
    virtual void OnClose(int error) = 0;
    virtual void OnConnect(int error) = 0;
    virtual void OnReceive(int error) = 0;
    virtual void OnSend(int error) = 0;
    // Only ever posted: the address to connect to, in network order.
    virtual void FinishConnect(std::uint32_t address) = 0;

protected:
    ~WIN32_SocketEventThreadListener() = default;
};

} // namespace ZelNet
