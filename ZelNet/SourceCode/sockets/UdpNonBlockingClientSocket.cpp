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

using ZelBase::LogLevel;
using ZelBase::MutexLock;

std::shared_ptr<UdpNonBlockingClientSocket> UdpNonBlockingClientSocket::Create() {
    return MakeSocket<UdpNonBlockingClientSocket, WIN32_UdpNonBlockingClientSocket>();
}

WIN32_UdpNonBlockingClientSocket::WIN32_UdpNonBlockingClientSocket()
    : WIN32_NonBlockingSocket("WIN32_UdpNonBlockingClientSocket") {
    context_ = static_cast<UdpNonBlockingClientSocket*>(this);
}

bool WIN32_UdpNonBlockingClientSocket::Create(UdpNonBlockingSocketListener* listener,
                                              std::uint16_t localPort,
                                              const IpAddress& localAddress) {
    AwaitClosing();
    unsigned life = kNoLife;
    SocketPlace place;
    {
        MutexLock lock(&mutex_);
        TraceCall("Create");
        if (Open(SOCK_DGRAM, localPort, localAddress, life)) {
            listener_ = listener;
            place = place_;
        }
    }
    if (!place.thread) {
        FinishClose(life);
        return false;
    }
    // Datagrams can be sent at once, but the system promises to say so (FD_WRITE) for a connection
    // and after a send that was refused only. By now the listener may have released the socket; a
    // slot that is too busy to take this is busy with telling the same.
    place.thread->PostOnSend(place);
    return true;
}

bool WIN32_UdpNonBlockingClientSocket::Bind(std::uint16_t port, const IpAddress& address) {
    MutexLock lock(&mutex_);
    TraceCall("Bind");
    return BindHandle(port, address);
}

std::uint32_t WIN32_UdpNonBlockingClientSocket::SendTo(const std::string& address,
                                                       std::uint16_t port, const void* data,
                                                       std::uint32_t size) {
    const HandleUse use(*this);
    TraceCall("SendTo");
    const IpAddress target(address);
    if (!target.IsValid()) {
        logger_->Log("SendTo", LogLevel::kError, "Hostname resolution not supported.");
        return 0;
    }
    sockaddr_in remote{};
    remote.sin_family = AF_INET;
    remote.sin_port = htons(port);
    remote.sin_addr.s_addr = target.GetValue();
    const int sent = sendto(handle_, static_cast<const char*>(data), static_cast<int>(size), 0,
                            reinterpret_cast<const sockaddr*>(&remote), sizeof remote);
    if (sent == SOCKET_ERROR) {
        LogError("SendTo", "sendto() failed with error code: %d.", WSAGetLastError());
        return 0;
    }
    return static_cast<std::uint32_t>(sent);
}

std::uint32_t WIN32_UdpNonBlockingClientSocket::ReceiveFrom(void* buffer, std::uint32_t size,
                                                            IpAddress& address,
                                                            std::uint16_t& port) {
    const HandleUse use(*this);
    TraceCall("ReceiveFrom");
    sockaddr_in remote{};
    int length = sizeof remote;
    const int received = recvfrom(handle_, static_cast<char*>(buffer), static_cast<int>(size), 0,
                                  reinterpret_cast<sockaddr*>(&remote), &length);
    if (received == SOCKET_ERROR) {
        LogError("ReceiveFrom", "recvfrom() failed with error code: %d.", WSAGetLastError());
        return 0;
    }
    address.SetAddress(static_cast<std::uint32_t>(remote.sin_addr.s_addr));
    port = ntohs(remote.sin_port);
    logger_->Log("ReceiveFrom", LogLevel::kTrace, "Port = %lu, Address = %s",
                 static_cast<unsigned long>(port), address.GetText().c_str());
    return static_cast<std::uint32_t>(received);
}

bool WIN32_UdpNonBlockingClientSocket::Close(bool fromEvent) {
    return CloseSocket(fromEvent);
}

void WIN32_UdpNonBlockingClientSocket::SetContext(void* context) {
    MutexLock lock(&mutex_);
    context_ = context;
}

void WIN32_UdpNonBlockingClientSocket::OnClose(int error) {
    if (EnterClose()) {
        DeliverClose(CallOf(std::exchange(listener_, nullptr),
                            &UdpNonBlockingSocketListener::OnClose, error));
    }
}

void WIN32_UdpNonBlockingClientSocket::OnReceive(int error) {
    if (Enter()) {
        logger_->Log("OnReceive", LogLevel::kTrace, "Calling OnReceive");
        Notify(listener_, &UdpNonBlockingSocketListener::OnReceive, error);
    }
}

void WIN32_UdpNonBlockingClientSocket::OnSend(int error) {
    if (Enter()) {
        logger_->Log("OnSend", LogLevel::kTrace, "Calling OnSend()");
        Notify(listener_, &UdpNonBlockingSocketListener::OnSend, error);
    }
}

} // namespace ZelNet
