#include "ZelNet/SourceCode/mail/AMailClient.h"

#include "ZelBase/threads/Mutex.h"
#include "ZelBase/threads/Thread.h"
#include "ZelNet/SourceCode/ComponentLogger.h"

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::MutexLock;

// How long a notification waits for the mutex before it is dropped.
constexpr std::uint32_t kPatienceMs = 250;
// The beginning of a line that is never too long.
constexpr std::uint32_t kShortLine = 1 << 16;

bool Send(ATcpNonBlockingLineSocket& socket, std::unique_ptr<SendSource> source) {
    return !source || source->Remaining() == 0 || socket.Send(std::move(source));
}

bool Send(ATcpNonBlockingLineSocket& socket, std::string_view data) {
    const auto size = static_cast<std::uint32_t>(data.size());
    return size == 0 || socket.Send(data.data(), size) == size;
}

void Close(ATcpNonBlockingLineSocket& socket) noexcept {
    try {
        socket.Close(false);
    } catch (...) {
        // The connection goes with the client then.
    }
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
    if (IsReceivingText()) {
        TakeTextLine(context, error);
    } else {
        React(&AMailClient::ReactToLine, context, error);
    }
}

void AMailClient::TakeTextLine(void* context, int error) noexcept {
    auto& socket = *static_cast<ATcpNonBlockingLineSocket*>(context);
    Step step = &AMailClient::ReactToTextEnd;
    bool isComplete = true;
    try {
        std::string line;
        socket.ReceiveLine(line);
        if (AddTextLine(line)) {
            return;
        }
    } catch (...) {
        step = &AMailClient::ReactToTextFailure;
        isComplete = false;
    }
    if (!React(step, context, error) && !isComplete) {
        Close(socket); // the lines that follow must not pass for the whole
    }
}

// Takes `step` with the mutex held and then carries out what it leads to. False, and nothing done,
// when the mutex is held for too long.
bool AMailClient::React(Step step, void* context, int error) noexcept {
    auto& socket = *static_cast<ATcpNonBlockingLineSocket*>(context);
    Consequences consequences;
    try {
        if (!mutex_.Lock(kPatienceMs, nullptr)) {
            logger_->Log("React", LogLevel::kWarning, "Notification dropped.");
            return false;
        }
        ZelBase::MutexReleaser releaser(mutex_);
        Take(step, &socket, error, consequences);
    } catch (const ZelBase::ThreadTerminateException&) {
        // The mutex cannot be had any more: nothing can be told, but nobody is left waiting.
        logger_->Log("React", LogLevel::kError, "Thread Termination Exception.");
        consequences.close = true;
    }
    CarryOut(consequences, socket);
    return true;
}

void AMailClient::Take(Step step, ATcpNonBlockingLineSocket* socket, int error,
                       Consequences& consequences) noexcept {
    try {
        (this->*step)(socket, error, consequences);
    } catch (const ZelBase::ThreadTerminateException&) {
        Fail("Thread Termination Exception.", consequences);
    } catch (...) {
        Fail("Uncaught Exception.", consequences);
    }
}

// What had been noted is forgotten: it is not known how much is missing.
void AMailClient::Fail(const char* reason, Consequences& consequences) noexcept {
    logger_->Log("React", LogLevel::kError, "%s", reason);
    consequences.command.Clear();
    consequences.header.clear();
    consequences.body.reset();
    consequences.end = {};
    consequences.noticeCount = 0;
    HandleFailure(consequences);
    consequences.close = true;
}

void AMailClient::ReactToClose(ATcpNonBlockingLineSocket* /*socket*/, int /*error*/,
                               Consequences& consequences) {
    HandleClose(consequences);
}

void AMailClient::ReactToConnect(ATcpNonBlockingLineSocket* /*socket*/, int error,
                                 Consequences& consequences) {
    HandleConnect(error == 0, consequences);
}

// Lines are taken as they are announced; this bounds what a server can have us keep without one.
void AMailClient::ReactToData(ATcpNonBlockingLineSocket* socket, int /*error*/,
                              Consequences& consequences) {
    if (socket->Available() > LongestLine()) {
        logger_->Log("OnReceive", LogLevel::kWarning, "Line too long.  Closing the socket.");
        consequences.close = true;
    }
}

void AMailClient::ReactToSendReady(ATcpNonBlockingLineSocket* /*socket*/, int /*error*/,
                                   Consequences& consequences) {
    canSend_ = true;
    RunSendStep(consequences);
}

void AMailClient::ReactToOperation(ATcpNonBlockingLineSocket* /*socket*/, int /*error*/,
                                   Consequences& consequences) {
    RunSendStep(consequences);
}

void AMailClient::ReactToLine(ATcpNonBlockingLineSocket* socket, int /*error*/,
                              Consequences& consequences) {
    std::string line;
    socket->ReceiveLine(line);
    HandleLine(line, consequences);
}

void AMailClient::ReactToTextEnd(ATcpNonBlockingLineSocket* /*socket*/, int /*error*/,
                                 Consequences& consequences) {
    HandleTextEnd(consequences);
}

void AMailClient::ReactToTextFailure(ATcpNonBlockingLineSocket* /*socket*/, int /*error*/,
                                     Consequences& consequences) {
    Fail("Uncaught Exception.", consequences);
}

AMailClient::OpenResult AMailClient::Open(const std::string& server, std::uint32_t port,
                                          unsigned long& systemError) noexcept {
    try {
        return OpenSocket(server, port, systemError);
    } catch (...) {
        systemError = ERROR_NOT_ENOUGH_MEMORY;
        ReleaseSocket();
        return OpenResult::kNotCreated;
    }
}

AMailClient::OpenResult AMailClient::OpenSocket(const std::string& server, std::uint32_t port,
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

void AMailClient::Proceed(Consequences& consequences) noexcept {
    Take(&AMailClient::ReactToOperation, nullptr, 0, consequences);
}

void AMailClient::CarryOut(Consequences& consequences) {
    std::shared_ptr<ATcpNonBlockingLineSocket> socket;
    {
        MutexLock lock(&mutex_);
        socket = socket_;
    }
    if (socket) {
        CarryOut(consequences, *socket);
    }
}

void AMailClient::CarryOut(Consequences& consequences, ATcpNonBlockingLineSocket& socket) noexcept {
    try {
        SendAndTell(consequences, socket);
    } catch (...) {
        logger_->Log("CarryOut", LogLevel::kError, "Uncaught Exception.");
        consequences.close = true;
    }
    if (consequences.close) {
        Close(socket);
    }
}

void AMailClient::SendAndTell(Consequences& consequences, ATcpNonBlockingLineSocket& socket) {
    // A command that cannot be sent whole ends the connection: the server would take what comes
    // next for the rest of it.
    if (!Send(socket, consequences.command.Text()) || !Send(socket, consequences.header) ||
        !Send(socket, std::move(consequences.body)) || !Send(socket, consequences.end)) {
        consequences.close = true;
    }
    consequences.command.Clear();
    for (std::size_t i = 0; i < consequences.noticeCount; ++i) {
        consequences.notices[i].Run();
    }
}

} // namespace ZelNet
