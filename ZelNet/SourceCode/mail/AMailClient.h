#pragma once

// What the SMTP and the POP3 client have in common: one line socket, whose notifications they
// answer, and one mutex around their state.
//
// The line socket calls with its own lock held, and an operation of the user comes with none. So
// that neither waits for the other, nothing is sent and nobody is told anything while the mutex is
// held: a step only notes what it leads to, and that is carried out afterwards.
//
// A step that cannot be taken to its end, for want of memory, fails as if the server had refused,
// and the connection is closed: going on would lose what the server has said. To tell that, and to
// tell of a close, takes no memory.

#include "ZelBase/log/Logger.h"
#include "ZelBase/text/SecretText.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/ALineSocket.h"

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

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
    // A call of the listener. Without memory of its own, unlike a std::function.
    class Notice {
    public:
        Notice() noexcept = default;
        template <typename Body>
        explicit Notice(Body body) noexcept {
            static_assert(sizeof body <= sizeof body_ && std::is_trivially_copyable_v<Body>);
            new (body_) Body(body);
            run_ = [](std::byte* place) { (*std::launder(reinterpret_cast<Body*>(place)))(); };
        }
        void Run() { run_(body_); }

    private:
        alignas(std::max_align_t) std::byte body_[64];
        void (*run_)(std::byte* place) = nullptr;
    };

    // What a step leads to, carried out in this order. It stays where it was made.
    struct Consequences {
        Consequences() = default;
        Consequences(const Consequences&) = delete;
        Consequences& operator=(const Consequences&) = delete;

        void Add(Notice notice) noexcept { notices[noticeCount++] = notice; }

        // Sent one after another; the view must stay valid until then.
        ZelBase::SecretText command;
        std::string header;
        std::unique_ptr<SendSource> body;
        std::string_view end;
        // No step has more of them. They may point to `text`.
        std::array<Notice, 2> notices;
        std::size_t noticeCount = 0;
        std::string text;
        bool close = false;
    };

    explicit AMailClient(const char* component);
    // Derived classes release the socket in their own destructors: its callbacks call them.
    virtual ~AMailClient() = default;

    bool IsValid() const { return logger_ && mutex_.IsValid(); }

    // Makes a socket and starts to connect it. The step that failed, and the system's error.
    enum class OpenResult { kUnderWay, kNotCreated, kNotConnected };
    OpenResult Open(const std::string& server, std::uint32_t port,
                    unsigned long& systemError) noexcept ZELBASE_EXCLUDES(mutex_);
    // Closes the socket without any further notification; waits for one that is running.
    void ReleaseSocket() noexcept ZELBASE_EXCLUDES(mutex_);
    // For operations of the user: RunSendStep, and what comes of it.
    void Proceed(Consequences& consequences) noexcept ZELBASE_REQUIRES(mutex_);
    void CarryOut(Consequences& consequences) ZELBASE_EXCLUDES(mutex_);

    // The socket's notifications, with the mutex held.
    virtual void HandleConnect(bool success, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_) = 0;
    virtual void HandleLine(const std::string& line, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_) = 0;
    virtual void HandleClose(Consequences& consequences) noexcept ZELBASE_REQUIRES(mutex_) = 0;
    // A text of many lines is taken without the mutex, which for each of them would cost as much as
    // a trace record: while one is received, its lines go to AddTextLine, and only the event thread
    // may begin and end that. AddTextLine returns false when the text ends with this line, which
    // HandleTextEnd then does.
    virtual bool IsReceivingText() const noexcept { return false; }
    virtual bool AddTextLine(const std::string& /*line*/) { return false; }
    virtual void HandleTextEnd(Consequences& /*consequences*/) ZELBASE_REQUIRES(mutex_) {}
    // Notes that what is under way has failed; the connection is closed afterwards.
    virtual void HandleFailure(Consequences& consequences) noexcept ZELBASE_REQUIRES(mutex_) = 0;
    // Notes the command that is due, if any. Called when commands may be sent for the first time.
    virtual void RunSendStep(Consequences& consequences) ZELBASE_REQUIRES(mutex_) = 0;
    // How many bytes a line may have whose end has not come yet; a server that goes on is cut off.
    virtual std::uint32_t LongestLine() const ZELBASE_REQUIRES(mutex_) = 0;

    ZelBase::WIN32_Mutex mutex_;
    std::unique_ptr<ZelBase::Logger> logger_;
    // Whether the socket has said that it can send; nothing is sent before.
    bool canSend_ ZELBASE_GUARDED_BY(mutex_) = false;

private:
    using Step = void (AMailClient::*)(ATcpNonBlockingLineSocket* socket, int error,
                                       Consequences& consequences);

    OpenResult OpenSocket(const std::string& server, std::uint32_t port, unsigned long& systemError)
        ZELBASE_EXCLUDES(mutex_);
    void CarryOut(Consequences& consequences, ATcpNonBlockingLineSocket& socket) noexcept;
    static void SendAndTell(Consequences& consequences, ATcpNonBlockingLineSocket& socket);
    bool React(Step step, void* context, int error) noexcept;
    void TakeTextLine(void* context, int error) noexcept;
    void Take(Step step, ATcpNonBlockingLineSocket* socket, int error,
              Consequences& consequences) noexcept ZELBASE_REQUIRES(mutex_);
    void Fail(const char* reason, Consequences& consequences) noexcept ZELBASE_REQUIRES(mutex_);
    void ReactToClose(ATcpNonBlockingLineSocket* socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToConnect(ATcpNonBlockingLineSocket* socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToData(ATcpNonBlockingLineSocket* socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToSendReady(ATcpNonBlockingLineSocket* socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToOperation(ATcpNonBlockingLineSocket* socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToLine(ATcpNonBlockingLineSocket* socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToTextEnd(ATcpNonBlockingLineSocket* socket, int error, Consequences& consequences)
        ZELBASE_REQUIRES(mutex_);
    void ReactToTextFailure(ATcpNonBlockingLineSocket* socket, int error,
                            Consequences& consequences) ZELBASE_REQUIRES(mutex_);

    // Shared, so that it can be used without the mutex.
    std::shared_ptr<ATcpNonBlockingLineSocket> socket_ ZELBASE_GUARDED_BY(mutex_);
};

} // namespace ZelNet
