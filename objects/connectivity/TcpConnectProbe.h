#pragma once

// Finds out whether a TCP connection to a host and port can be opened. One probe makes one attempt.

#include "ZelBase/threads/Event.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingClientSocket.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace tervane {

class TcpConnectProbe final : public ZelNet::TcpNonBlockingSocketListener {
public:
    // Connects to a dotted IPv4 address, or to a host name that the socket layer looks up, and
    // waits at most `timeoutMs` (at least 1). True when the connection was made. A refused
    // connection and an unknown name are told only when the time has run out: deliberate, a host
    // that comes up meanwhile looks the same. Not on a socket event thread.
    bool Run(const std::string& location, std::uint16_t port, std::uint32_t timeoutMs);

    void OnConnect(void* context, int error) override;
    void OnClose(void* context, int error) override;
    void OnReceive(void* context, int error) override;
    void OnSend(void* context, int error) override;

private:
    bool Connect(const std::string& location, std::uint16_t port);

    std::unique_ptr<ZelBase::Event> connected_ = ZelBase::Event::Create();
    // Cleared by the socket event thread before it sets the event, read after the wait.
    std::atomic<bool> failed_ = true;
    // Last member, first to go: no callback runs while the others are destroyed.
    std::shared_ptr<ZelNet::TcpNonBlockingClientSocket> socket_;
};

} // namespace tervane
