#pragma once

// A TCP client socket that never blocks: operations return at once, and a listener is told what
// happens afterwards. All operations may be called from any thread, callbacks included.

#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingSocketListener.h"

#include <cstdint>
#include <string>

namespace ZelNet {

class ATcpNonBlockingClientSocket {
public:
    // Opens the socket, bound to the local port and address if either is given (0, unset). The
    // listener stays the caller's and must live until OnClose or until the socket is released.
    // Sockets marked secure take part in events but neither receive nor send. False, with nothing
    // open, when the socket is open already or the system refuses.
    virtual bool Create(TcpNonBlockingSocketListener* listener, std::uint16_t localPort,
                        const IpAddress& localAddress, bool secure) = 0;
    virtual bool Bind(std::uint16_t port, const IpAddress& address) = 0;
    // Starts to connect; OnConnect or OnClose tells how it went. Host names are looked up with the
    // library's own resolver, which has no time-out: whoever waits closes the socket in the end.
    virtual bool Connect(const std::string& host, std::uint16_t port) = 0;
    virtual bool Connect(const IpAddress& address, std::uint16_t port) = 0;
    // Takes at most `size` bytes that have arrived; Peek leaves them there. The number of bytes,
    // 0 when there are none.
    virtual std::uint32_t Receive(void* buffer, std::uint32_t size) = 0;
    virtual std::uint32_t Peek(void* buffer, std::uint32_t size) = 0;
    // The number of bytes that were taken, 0 when none can be now; OnSend follows then.
    virtual std::uint32_t Send(const void* data, std::uint32_t size) = 0;
    // `how` is SD_RECEIVE, SD_SEND or SD_BOTH.
    virtual bool Shutdown(int how) = 0;
    // Ends the connection; OnClose follows. With `fromEvent`, in a callback, it comes before this
    // returns and the socket may then be created again. False when the socket is not open.
    virtual bool Close(bool fromEvent) = 0;
    virtual bool GetPeer(IpAddress& address, std::uint16_t& port) = 0;
    // What callbacks are given, initially the socket itself.
    virtual void SetContext(void* context) = 0;
    virtual bool IsConnected() = 0;
    // Whether the last Send was not taken and OnSend has not come since.
    virtual bool IsSendPending() = 0;

protected:
    ~ATcpNonBlockingClientSocket() = default;
};

} // namespace ZelNet
