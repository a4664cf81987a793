#pragma once

// The client's side of POP3 (RFC 1939) over one line socket: log in with USER and PASS, then count,
// retrieve and delete messages one operation at a time, and leave. What is said when stands in
// PopStates.
//
// There is no timer in here: whoever waits for a notification gives up in his own time and destroys
// the client, which closes the connection. Every line that is received is traced, but never the
// password, even if the server repeats it or a message holds it.

#include "ZelNet/SourceCode/mail/AMailClient.h"
#include "ZelNet/SourceCode/mail/PopStates.h"
#include "ZelNet/SourceCode/mail/TextMark.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace ZelNet {

// What a user of APop3Client is told, on a socket event thread and with no lock of the client held.
// A notification must not block and must not destroy the client. A close of the connection ends
// what is under way with kTerminated; if nothing is, it comes as Connected(kTerminated).
class Pop3ClientListener {
public:
    virtual void Connected(PopStatus status) = 0;
    virtual void Greeted(PopStatus status) = 0;
    // After USER, and again, with `isPassword`, after PASS.
    virtual void LoginStep(bool isPassword, PopStatus status) = 0;
    // Number of messages and their total size in bytes, 0 on failure.
    virtual void MailCount(PopStatus status, std::uint32_t count, std::uint32_t totalSize) = 0;
    // The message as it was received, each line with LF in place of its end: those that begin with
    // a dot have one more. The listener may take the text; it is empty on failure.
    virtual void Retrieved(PopStatus status, int index, std::string& text) = 0;
    virtual void Deleted(int index, PopStatus status) = 0;
    virtual void QuitDone(PopStatus status) = 0;

protected:
    ~Pop3ClientListener() = default;
};

class APop3Client final : public AMailClient {
public:
    // A message that is longer, line by line with what it takes to keep a line, is cut off with its
    // connection: nobody can make us fill the memory.
    static constexpr std::uint32_t kLongestMessage = 128 << 20;

    // Null when the system cannot provide one.
    static std::unique_ptr<APop3Client> Create();
    // Closes the connection without any further notification; waits for one that is running.
    ~APop3Client() override;

    // For the time before Connect.
    void SetServer(const std::string& server, std::uint32_t port);
    void SetLogin(const std::string& login, std::string_view password);
    // Overwrites the password, which is of no use once the server has taken it.
    void ForgetPassword();

    // Starts to connect and to log in; the listener must outlive the connection. False, without a
    // notification, when that cannot be: GetLastError tells why. Login and password with a line
    // break or a zero character are invalid arguments.
    bool Connect(Pop3ClientListener* listener);
    // Each starts one operation of a connection that is logged in and idle, and whose notification
    // follows; else false with error 7. The index is the server's number of the message, which
    // counts from 1.
    bool GetMailCount();
    bool RetrieveMessage(int index);
    bool DeleteMessage(int index);
    // The server closes after QuitDone.
    bool Quit();
    // Why the last operation returned false.
    PopStatus GetLastError();

private:
    APop3Client();

    PopStatus CheckSettings(const Pop3ClientListener* listener) const ZELBASE_REQUIRES(mutex_);
    bool FailConnect(const char* format, unsigned long systemError) ZELBASE_EXCLUDES(mutex_);
    bool Begin(const char* operation, PopClientState state, int index) ZELBASE_EXCLUDES(mutex_);
    // Without the name of a state, for a line that is not awaited, only its length is told.
    void TraceLine(const char* stateName, const std::string& line);
    void HandleStatusLine(const PopReplyRule& rule, const std::string& line,
                          Consequences& consequences) ZELBASE_REQUIRES(mutex_);
    void Notify(PopNotification notification, PopStatus status, Consequences& consequences,
                std::string_view statusLine = {}) noexcept ZELBASE_REQUIRES(mutex_);

    void HandleConnect(bool success, Consequences& consequences) override ZELBASE_REQUIRES(mutex_);
    void HandleLine(const std::string& line, Consequences& consequences) override
        ZELBASE_REQUIRES(mutex_);
    bool IsReceivingText() const noexcept override { return receiving_; }
    bool AddTextLine(const std::string& line) override;
    void HandleTextEnd(Consequences& consequences) override ZELBASE_REQUIRES(mutex_);
    void HandleClose(Consequences& consequences) noexcept override ZELBASE_REQUIRES(mutex_);
    void HandleFailure(Consequences& consequences) noexcept override ZELBASE_REQUIRES(mutex_);
    void RunSendStep(Consequences& consequences) override ZELBASE_REQUIRES(mutex_);
    std::uint32_t LongestLine() const override ZELBASE_REQUIRES(mutex_);

    std::string server_ ZELBASE_GUARDED_BY(mutex_);
    std::uint32_t port_ ZELBASE_GUARDED_BY(mutex_) = 0;
    std::string login_ ZELBASE_GUARDED_BY(mutex_);
    ZelBase::SecretText password_ ZELBASE_GUARDED_BY(mutex_);
    // Of the password of the connection; it changes only while there is none.
    TextMark passwordMark_;
    PopClientState state_ ZELBASE_GUARDED_BY(mutex_) = PopClientState::kClosed;
    int index_ ZELBASE_GUARDED_BY(mutex_) = 0;
    // A message is being received: the state says so too. Until that ends, the message and what its
    // lines take are the event thread's, which alone sets this; a failure before that only says
    // again that there is none.
    std::atomic<bool> receiving_ = false;
    std::string messageText_;
    std::uint32_t messageSize_ = 0;
    // Set from Connect until the connection has closed.
    Pop3ClientListener* listener_ ZELBASE_GUARDED_BY(mutex_) = nullptr;
    PopStatus lastError_ ZELBASE_GUARDED_BY(mutex_) = PopStatus::kSuccess;
};

} // namespace ZelNet
