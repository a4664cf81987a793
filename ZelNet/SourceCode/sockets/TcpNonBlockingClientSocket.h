#pragma once

#include "ZelNet/SourceCode/IpAddress.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ZelNet {

// What a user of a TCP socket is told, on a socket event thread. Each call carries the socket's
// context and a generic error code (see GenericError.h). A callback must not block: other sockets
// share the thread. It may call any operation of the socket, Close and the socket's release
// included. After OnClose no call follows.
class TcpNonBlockingSocketListener {
public:
    // For listening sockets, which this library does not have.
    virtual void OnAccept(void* /*context*/, int /*error*/) {}
    // The connection has ended, or could not be made; received data may still be read here.
    virtual void OnClose(void* context, int error) = 0;
    // The connection was made (error 0) or refused.
    virtual void OnConnect(void* context, int error) = 0;
    // Urgent data, which no socket of this library asks for.
    virtual void OnOutOfBandData(void* /*context*/, int /*error*/) {}
    // There is data to receive.
    virtual void OnReceive(void* context, int error) = 0;
    // Data can be sent, again.
    virtual void OnSend(void* context, int error) = 0;

protected:
    ~TcpNonBlockingSocketListener() = default;
};

// A TCP client socket that never blocks: operations return at once, and a listener is told what
// happens afterwards. All operations may be called from any thread, callbacks included.
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

class TcpNonBlockingClientSocket : public ATcpNonBlockingClientSocket {
public:
    // A new socket, not open yet; null when the system cannot provide one. Releasing it closes it:
    // a callback that is running on another thread is waited for, and none follows.
    static std::shared_ptr<TcpNonBlockingClientSocket> Create();
    using ATcpNonBlockingClientSocket::Create;

protected:
    ~TcpNonBlockingClientSocket() = default;
};

} // namespace ZelNet
