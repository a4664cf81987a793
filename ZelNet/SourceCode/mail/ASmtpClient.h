#pragma once

// The client's side of SMTP (RFC 5321) over one line socket: one message to one recipient at a
// time, after AUTH LOGIN if wanted. What is said when stands in SmtpStates.
//
// There is no timer in here: whoever waits for a notification gives up in his own time and destroys
// the client, which closes the connection. Cc and Bcc are header lines only, one RCPT is sent.

#include "ZelNet/SourceCode/mail/AMIME.h"
#include "ZelNet/SourceCode/mail/AMailClient.h"
#include "ZelNet/SourceCode/mail/SmtpStates.h"

namespace ZelNet {

// What a user of ASmtpClient is told, on a socket event thread and with no lock of the client held.
// A notification must not block and must not destroy the client. Closed is the last one, except
// that a Connect that ends in Connected with an error is followed by none: the socket is then still
// there and is closed by Quit or with the client.
class SmtpClientListener {
public:
    virtual void Connected(SmtpStatus status) = 0;
    virtual void Greeted(SmtpStatus status) = 0;
    // The end of HELO or EHLO and, when it is used, of the authentication.
    virtual void LoggedIn(SmtpStatus status) = 0;
    virtual void MailSent(SmtpStatus status) = 0;
    virtual void QuitDone(SmtpStatus status) = 0;
    virtual void Closed(SmtpStatus status) = 0;

protected:
    ~SmtpClientListener() = default;
};

class ASmtpClient final : public AMailClient {
public:
    // Null when the system cannot provide one.
    static std::unique_ptr<ASmtpClient> Create();
    // Closes the connection without any further notification; waits for one that is running.
    ~ASmtpClient() override;

    // False with error 4 for null; false with error 5 from Connect until the connection has closed.
    bool SetServer(const char* server);
    bool SetPort(std::uint32_t port);
    bool SetLogin(const char* login);
    // Kept until it is set anew or the client ends; overwritten then.
    bool SetPassword(const char* password);
    // The sender of the envelope, and of the message that is sent for want of another; the others
    // are for that only.
    bool SetFrom(const char* from);
    bool SetTo(const char* to);
    bool SetSubject(const char* subject);
    bool SetBody(const char* body);

    // Starts to connect, and to log in with `useAuth`; the listener must outlive the connection.
    // False, without a notification, when that cannot be: GetLastError tells why. Login and
    // password with a line break are invalid arguments.
    bool Connect(SmtpClientListener* listener, bool useAuth);
    // Starts to send, once LoggedIn has told success. The message stays the caller's and must live
    // until MailSent or Closed; its body is changed. False with error 6 when it is not the time. An
    // address that cannot stand in a command is not sent: MailSent tells as if the server had
    // refused it.
    bool SendMail(const std::string& recipient, AMIME* message);
    // Starts to say good-bye; QuitDone and Closed follow. At any other time it closes the
    // connection and returns false with error 6.
    bool Quit();
    // Why the last operation returned false.
    SmtpStatus GetLastError();
    // The text of the server's last reply.
    std::string LastResponse();

private:
    ASmtpClient();

    template <typename Text>
    bool Set(Text ASmtpClient::*field, const char* value) ZELBASE_EXCLUDES(mutex_);
    SmtpStatus CheckSettings(bool useAuth) const ZELBASE_REQUIRES(mutex_);
    bool Refuse(SmtpStatus reason) ZELBASE_REQUIRES(mutex_);
    void ChangeState(SmtpClientState state) ZELBASE_REQUIRES(mutex_);
    void Notify(SmtpNotification notification, SmtpStatus status,
                Consequences& consequences) noexcept ZELBASE_REQUIRES(mutex_);
    void AppendValue(SmtpArgument argument, ZelBase::SecretText& command) const
        ZELBASE_REQUIRES(mutex_);
    void ComposeText(Consequences& consequences) ZELBASE_REQUIRES(mutex_);

    void HandleConnect(bool success, Consequences& consequences) override ZELBASE_REQUIRES(mutex_);
    void HandleLine(const std::string& line, Consequences& consequences) override
        ZELBASE_REQUIRES(mutex_);
    void HandleClose(Consequences& consequences) noexcept override ZELBASE_REQUIRES(mutex_);
    void HandleFailure(Consequences& consequences) noexcept override ZELBASE_REQUIRES(mutex_);
    void RunSendStep(Consequences& consequences) override ZELBASE_REQUIRES(mutex_);
    std::uint32_t LongestLine() const override ZELBASE_REQUIRES(mutex_);

    std::string server_ ZELBASE_GUARDED_BY(mutex_);
    std::uint32_t port_ ZELBASE_GUARDED_BY(mutex_) = 0;
    std::string login_ ZELBASE_GUARDED_BY(mutex_);
    ZelBase::SecretText password_ ZELBASE_GUARDED_BY(mutex_);
    std::string from_ ZELBASE_GUARDED_BY(mutex_);
    std::string to_ ZELBASE_GUARDED_BY(mutex_);
    std::string subject_ ZELBASE_GUARDED_BY(mutex_);
    std::string body_ ZELBASE_GUARDED_BY(mutex_);
    std::string hostName_ ZELBASE_GUARDED_BY(mutex_);
    std::string recipient_ ZELBASE_GUARDED_BY(mutex_);
    AMIME* message_ ZELBASE_GUARDED_BY(mutex_) = nullptr;
    // The message of the fields above.
    std::unique_ptr<AMIME> ownMessage_ ZELBASE_GUARDED_BY(mutex_);
    std::string lastResponse_ ZELBASE_GUARDED_BY(mutex_);
    SmtpClientState state_ ZELBASE_GUARDED_BY(mutex_) = SmtpClientState::kClosed;
    SmtpClientPhase phase_ ZELBASE_GUARDED_BY(mutex_) = SmtpClientPhase::kConnecting;
    bool useAuth_ ZELBASE_GUARDED_BY(mutex_) = false;
    // Set from Connect until the connection has closed.
    SmtpClientListener* listener_ ZELBASE_GUARDED_BY(mutex_) = nullptr;
    SmtpStatus lastError_ ZELBASE_GUARDED_BY(mutex_) = SmtpStatus::kSuccess;
};

} // namespace ZelNet
