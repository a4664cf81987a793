#include "ZelNet/SourceCode/AMailClient.h"

#include "ZelBase/MutexLock.h"
#include "ZelBase/ThreadTerminateException.h"
#include "ZelNet/SourceCode/ComponentLogger.h"
#include "ZelNet/SourceCode/MutexReleaser.h"

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::MutexLock;

// How long a notification waits for the mutex before it is dropped.
constexpr std::uint32_t kPatienceMs = 250;
// The beginning of a line that is never too long.
constexpr std::uint32_t kShortLine = 1 << 16;

bool Send(ATcpNonBlockingLineSocket& socket, std::string_view data) {
    const auto size = static_cast<std::uint32_t>(data.size());
    return size == 0 || socket.Send(data.data(), size) == size;
}

} // namespace

AMailClient::AMailClient(const char* component) : logger_(CreateLogger(component)) {}

void AMailClient::OnClose(void* context, int error) {
    React(&AMailClient::ReactToClose, context, error);
}

void AMailClient::OnConnect(void* context, int error) {
    React(&AMailClient::ReactToConnect, context, error);
}

void AMailClient::OnReceive(void* context, int error) {
    // This comes for every piece of a message, so it must not cost the mutex each time.
    if (static_cast<ATcpNonBlockingLineSocket*>(context)->Available() > kShortLine) {
        React(&AMailClient::ReactToData, context, error);
    }
}

void AMailClient::OnSend(void* context, int error) {
    React(&AMailClient::ReactToSendReady, context, error);
}

void AMailClient::OnReceiveLine(void* context, int error) {
    React(&AMailClient::ReactToLine, context, error);
}

// Takes `step` with the mutex held and then carries out what it leads to.
void AMailClient::React(Step step, void* context, int error) noexcept {
    try {
        auto& socket = *static_cast<ATcpNonBlockingLineSocket*>(context);
        Consequences consequences;
        {
            if (!mutex_.Lock(kPatienceMs, nullptr)) {
                logger_->Log("React", LogLevel::kWarning, "Notification dropped.");
                return;
            }
            MutexReleaser releaser(mutex_);
            (this->*step)(socket, error, consequences);
        }
        CarryOut(consequences, socket);
    } catch (const ZelBase::ThreadTerminateException&) {
        logger_->Log("React", LogLevel::kError, "Thread Termination Exception.");
    } catch (...) {
        logger_->Log("React", LogLevel::kError, "Uncaught Exception.");
    }
}

void AMailClient::ReactToClose(ATcpNonBlockingLineSocket& /*socket*/, int /*error*/,
                               Consequences& consequences) {
    HandleClose(consequences);
}

void AMailClient::ReactToConnect(ATcpNonBlockingLineSocket& /*socket*/, int error,
                                 Consequences& consequences) {
    HandleConnect(error == 0, consequences);
}

// Lines are taken as they are announced; this bounds what a server can have us keep without one.
void AMailClient::ReactToData(ATcpNonBlockingLineSocket& socket, int /*error*/,
                              Consequences& consequences) {
    if (socket.Available() > LongestLine()) {
        logger_->Log("OnReceive", LogLevel::kWarning, "Line too long.  Closing the socket.");
        consequences.close = true;
    }
}

void AMailClient::ReactToSendReady(ATcpNonBlockingLineSocket& /*socket*/, int /*error*/,
                                   Consequences& consequences) {
    canSend_ = true;
    RunSendStep(consequences);
}

void AMailClient::ReactToLine(ATcpNonBlockingLineSocket& socket, int /*error*/,
                              Consequences& consequences) {
    std::string line;
    socket.ReceiveLine(line);
    HandleLine(line, consequences);
}

AMailClient::OpenResult AMailClient::Open(const std::string& server, std::uint32_t port,
                                          unsigned long& systemError) {
    std::shared_ptr<ATcpNonBlockingLineSocket> socket = ATcpNonBlockingLineSocket::Create();
    if (!socket || !socket->Create(this, 0, IpAddress(), false)) {
        systemError = ::GetLastError();
        return OpenResult::kNotCreated;
    }
    std::shared_ptr<ATcpNonBlockingLineSocket> previous;
    {
        MutexLock lock(&mutex_);
        previous = std::exchange(socket_, socket);
        canSend_ = false;
    }
    previous.reset();
    if (!socket->Connect(server, static_cast<std::uint16_t>(port))) {
        systemError = ::GetLastError();
        ReleaseSocket();
        return OpenResult::kNotConnected;
    }
    return OpenResult::kUnderWay;
}

void AMailClient::ReleaseSocket() noexcept {
    std::shared_ptr<ATcpNonBlockingLineSocket> socket;
    try {
        MutexLock lock(&mutex_);
        socket = std::move(socket_);
    } catch (const ZelBase::ThreadTerminateException&) {
        // Without a mutex there never was a socket.
    }
}

void AMailClient::CarryOut(const Consequences& consequences) {
    std::shared_ptr<ATcpNonBlockingLineSocket> socket;
    {
        MutexLock lock(&mutex_);
        socket = socket_;
    }
    if (socket) {
        CarryOut(consequences, *socket);
    }
}

void AMailClient::CarryOut(const Consequences& consequences, ATcpNonBlockingLineSocket& socket) {
    // A command that cannot be sent whole ends the connection: the server would take what comes
    // next for the rest of it.
    const bool sent = Send(socket, consequences.command) && Send(socket, consequences.body) &&
                      Send(socket, consequences.end);
    for (const auto& notify : consequences.notifications) {
        notify();
    }
    if (consequences.close || !sent) {
        socket.Close(false);
    }
}

} // namespace ZelNet
