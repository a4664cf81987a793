#pragma once

#include "ZelNet/SourceCode/sockets/ADns.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingClientSocket.h"
#include "ZelNet/SourceCode/sockets/WIN32_NonBlockingSocket.h"

namespace ZelNet {

class WIN32_TcpNonBlockingClientSocket final : public TcpNonBlockingClientSocket,
                                               public WIN32_NonBlockingSocket {
public:
    WIN32_TcpNonBlockingClientSocket();

    bool Create(TcpNonBlockingSocketListener* listener, std::uint16_t localPort,
                const IpAddress& localAddress, bool secure) override;
    bool Bind(std::uint16_t port, const IpAddress& address) override;
    bool Connect(const std::string& host, std::uint16_t port) override;
    bool Connect(const IpAddress& address, std::uint16_t port) override;
    std::uint32_t Receive(void* buffer, std::uint32_t size) override;
    std::uint32_t Peek(void* buffer, std::uint32_t size) override;
    std::uint32_t Send(const void* data, std::uint32_t size) override;
    bool Shutdown(int how) override;
    bool Close(bool fromEvent) override;
    bool GetPeer(IpAddress& address, std::uint16_t& port) override;
    void SetContext(void* context) override;
    bool IsConnected() override;
    bool IsSendPending() override;

    void OnAccept(int error) override;
    void OnClose(int error) override;
    void OnConnect(int error) override;
    void OnReceive(int error) override;
    void OnSend(int error) override;
    void FinishConnect(std::uint32_t address) override;

private:
    struct PendingConnect;

    void ForgetListener() override ZELBASE_REQUIRES(mutex_) { listener_ = nullptr; }
    // The steps of connecting are for one life; the socket may be closed, and opened again, at any
    // time in between.
    bool BeginConnecting(std::uint16_t port, unsigned& life) ZELBASE_EXCLUDES(mutex_);
    bool EndConnecting(unsigned life, bool underWay) ZELBASE_EXCLUDES(mutex_);
    int StartConnect(std::uint32_t address, unsigned life) ZELBASE_EXCLUDES(mutex_);
    bool Resolve(const std::string& host, unsigned life) ZELBASE_EXCLUDES(mutex_);
    static void OnResolved(bool success, void* pendingConnect,
                           const std::vector<DnsRecord>& records);
    void DeliverReceive(int error) ZELBASE_RELEASE(mutex_);
    std::uint32_t ReceiveWith(const char* operation, int flags, void* buffer, std::uint32_t size)
        ZELBASE_EXCLUDES(mutex_);

    TcpNonBlockingSocketListener* listener_ ZELBASE_GUARDED_BY(mutex_) = nullptr;
    std::uint16_t remotePort_ ZELBASE_GUARDED_BY(mutex_) = 0;
    bool connecting_ ZELBASE_GUARDED_BY(mutex_) = false;
    bool connected_ ZELBASE_GUARDED_BY(mutex_) = false;
    bool receivedWhileConnecting_ ZELBASE_GUARDED_BY(mutex_) = false;
    // These two are used by what moves data, see HandleUse.
    std::atomic<bool> sendPending_ = false;
    std::atomic<bool> secure_ = false;
    // While a name is looked up.
    std::shared_ptr<ADns> resolver_ ZELBASE_GUARDED_BY(mutex_);
};

} // namespace ZelNet
