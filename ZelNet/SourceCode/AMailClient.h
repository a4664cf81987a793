#pragma once

// What the SMTP and the POP3 client have in common: one line socket, whose notifications they
// answer, and one mutex around their state.
//
// The line socket calls with its own lock held, and an operation of the user comes with none. So
// that neither waits for the other, nothing is sent and nobody is told anything while the mutex is
// held: a step only notes what it leads to, and that is carried out afterwards.

#include "ZelBase/Logger.h"
#include "ZelBase/WIN32_Mutex.h"
#include "ZelNet/SourceCode/ALineSocket.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ZelNet {

class AMailClient : public TcpNonBlockingLineSocketListener {
public:
    AMailClient(const AMailClient&) = delete;
    AMailClient& operator=(const AMailClient&) = delete;

    void OnClose(void* context, int error) final;
    void OnConnect(void* context, int error) final;
    void OnReceive(void* context, int error) final;
    void OnSend(void* context, int error) final;
    void OnReceiveLine(void* context, int error) final;

protected:
    // What a step leads to, carried out in this order.
    struct Consequences {
        // Sent together; the two views must stay valid until the next notification.
        std::string command;
        std::string_view body;
        std::string_view end;
        std::vector<std::function<void()>> notifications;
        bool close = false;
    };

    explicit AMailClient(const char* component);
    // Derived classes release the socket in their own destructors: its callbacks call them.
    virtual ~AMailClient() = default;

    bool IsValid() const { return logger_ && mutex_.IsValid(); }

    // Makes a socket and starts to connect it. The step that failed, and the system's error.
    enum class OpenResult { kUnderWay, kNotCreated, kNotConnected };
    OpenResult Open(const std::string& server, std::uint32_t port, unsigned long& systemError)
        ZELBASE_EXCLUDES(mutex_);
    // Closes the socket without any further notification; waits for one that is running.
    void ReleaseSocket() noexcept ZELBASE_EXCLUDES(mutex_);
    // For operations of the user.
    void CarryOut(const Consequences& consequences) ZELBASE_EXCLUDES(mutex_);

    // The socket's notifications, with the mutex held.
    virtual void HandleConnect(bool success, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_) = 0;
    virtual void HandleLine(const std::string& line, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_) = 0;
    virtual void HandleClose(Consequences& consequences) ZELBASE_REQUIRES(mutex_) = 0;
    // Notes the command that is due, if any. Called when commands may be sent for the first time.
    virtual void RunSendStep(Consequences& consequences) ZELBASE_REQUIRES(mutex_) = 0;
    // How many bytes a line may have whose end has not come yet; a server that goes on is cut off.
    virtual std::uint32_t LongestLine() const ZELBASE_REQUIRES(mutex_) = 0;

    ZelBase::WIN32_Mutex mutex_;
    std::unique_ptr<ZelBase::Logger> logger_;
    // Whether the socket has said that it can send; nothing is sent before.
    bool canSend_ ZELBASE_GUARDED_BY(mutex_) = false;

private:
    using Step = void (AMailClient::*)(ATcpNonBlockingLineSocket& socket, int error,
                                       Consequences& consequences);

    static void CarryOut(const Consequences& consequences, ATcpNonBlockingLineSocket& socket);
    void React(Step step, void* context, int error) noexcept;
    void ReactToClose(ATcpNonBlockingLineSocket& socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToConnect(ATcpNonBlockingLineSocket& socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToData(ATcpNonBlockingLineSocket& socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToSendReady(ATcpNonBlockingLineSocket& socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToLine(ATcpNonBlockingLineSocket& socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);

    // Shared, so that it can be used without the mutex.
    std::shared_ptr<ATcpNonBlockingLineSocket> socket_ ZELBASE_GUARDED_BY(mutex_);
};

} // namespace ZelNet
