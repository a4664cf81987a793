#pragma once

// What a client of a text protocol needs of a TCP socket: what arrives is kept and handed out line
// by line, and what is sent goes through a queue that empties as fast as the system takes it.
//
// All operations may be called from any thread, callbacks included. The listener is called with the
// lock of the buffers held while data is received, except for Close, which never waits for that.

#include "ZelNet/SourceCode/SendSource.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingClientSocket.h"

namespace ZelNet {

// What a user of a line socket is told; the rules are those of TcpNonBlockingSocketListener. The
// context is the ATcpNonBlockingLineSocket. OnReceive comes after every piece of data that has
// arrived, OnSend when all data has been handed to the system.
class TcpNonBlockingLineSocketListener : public TcpNonBlockingSocketListener {
public:
    // In line mode: a line's end has arrived. Called once for each, so that one ReceiveLine per
    // call takes them all.
    virtual void OnReceiveLine(void* context, int error) = 0;

protected:
    ~TcpNonBlockingLineSocketListener() = default;
};

class ATcpNonBlockingLineSocket {
public:
    // What ReceiveLine returns when there is no line.
    static constexpr std::uint32_t kNoLine = 0xFFFFFFFF;

    // A new line socket, not open yet; null when the system cannot provide one.
    static std::unique_ptr<ATcpNonBlockingLineSocket> Create();
    // Closes the socket; a callback that is running on another thread is waited for, and none
    // follows. It may be destroyed in a callback.
    ~ATcpNonBlockingLineSocket();
    ATcpNonBlockingLineSocket(const ATcpNonBlockingLineSocket&) = delete;
    ATcpNonBlockingLineSocket& operator=(const ATcpNonBlockingLineSocket&) = delete;

    // Opens the socket with empty buffers and in line mode; see ATcpNonBlockingClientSocket. May be
    // repeated once the socket has closed. Returns this object, or null on failure.
    ATcpNonBlockingLineSocket* Create(TcpNonBlockingLineSocketListener* listener,
                                      std::uint16_t localPort, const IpAddress& localAddress,
                                      bool secure);
    bool Connect(const std::string& host, std::uint16_t port);
    // Takes the first line, without its end. Returns its length, or kNoLine when none is complete.
    std::uint32_t ReceiveLine(std::string& line);
    // Takes up to `size` bytes and returns how many.
    std::uint32_t Receive(void* dest, std::uint32_t size);
    // Returns how many of `size` bytes there are, and copies them if there are all of them. When
    // there are fewer, or `dest` is null, nothing is copied: this is deliberate, unlike in Receive.
    std::uint32_t Peek(void* dest, std::uint32_t size);
    // Queues the data and starts to send it. Returns `size`; 0 for a null or empty request, and
    // without memory.
    std::uint32_t Send(const void* data, std::uint32_t size);
    // The same for what the source gives, which is read as it is sent, on either thread, and counts
    // as queued until then. False for a null or empty source, and without memory.
    bool Send(std::unique_ptr<SendSource> source);
    // The number of bytes that can be received, and that were received since the object was made.
    std::uint32_t Available();
    std::uint32_t BytesReceived();
    // The number of bytes in the send queue.
    std::uint32_t Unsent();
    void ClearReceiveBuffer();
    // Whether OnReceiveLine is called.
    void SetLineMode(bool lineMode);
    // Ends the connection, see ATcpNonBlockingClientSocket::Close. From now on only OnClose comes.
    bool Close(bool fromEvent);
    bool IsConnected();

private:
    class InternalListener;

    ATcpNonBlockingLineSocket();

    // Shared with its own callbacks, so that these survive the destruction of this object.
    std::shared_ptr<InternalListener> internal_;
    // Its end waits for callbacks, which use internal_ and, by the bare pointer, the socket.
    std::shared_ptr<TcpNonBlockingClientSocket> ownedSocket_;
    TcpNonBlockingClientSocket* const socket_;
};

} // namespace ZelNet
