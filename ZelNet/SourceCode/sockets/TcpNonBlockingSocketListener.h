#pragma once

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

} // namespace ZelNet
