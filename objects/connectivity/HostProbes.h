#pragma once

#include "ZelBase/threads/Event.h"
#include "ZelNet/SourceCode/sockets/TcpNonBlockingClientSocket.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace ZelNet {
class IpHelper;
}

namespace tervane {

// Finds out whether a TCP connection to a host and port can be opened. One probe makes one attempt.
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

// Whether a name can be resolved and whether a host answers a ping. Names are in the ANSI code
// page. The caller holds a use of the socket layer and may be on any thread that may wait.

// Whether `name` has an address. With a time-out, in milliseconds, all configured name servers are
// asked, for which `ipHelper` is needed; without one (0) the system's resolver answers in its own
// time. The empty name has none.
bool CanResolve(const std::string& name, std::uint32_t timeoutMs,
                std::shared_ptr<const ZelNet::IpHelper> ipHelper);

// Whether the host, a dotted address or a name, answers one of at most `attempts` echo requests;
// none are sent when `attempts` is below 1. Each waits for `timeoutMs`.
bool AnswersPing(const std::string& name, std::uint16_t timeoutMs, long attempts);

} // namespace tervane
