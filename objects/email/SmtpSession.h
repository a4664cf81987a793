#pragma once

// One mail from connecting to leaving: drives the SMTP client step by step and waits for each at
// most as long as the script allows.

#include "ZelBase/text/SecretText.h"
#include "ZelNet/SourceCode/mail/ASmtpClient.h"
#include "objects/email/NotificationQueue.h"

#include <memory>
#include <string>

namespace tervane {

struct SmtpSettings {
    std::string server;
    std::uint32_t port = 0;
    // The server is asked to authenticate only when both are given.
    std::string login;
    ZelBase::SecretText password;
    // The longest wait for each step.
    long timeoutSeconds = 0;
};

struct OutgoingMail {
    // The addresses of the envelope.
    std::string sender;
    std::string recipient;
    std::unique_ptr<ZelNet::AMIME> message;
};

class SmtpSession final : private ZelNet::SmtpClientListener {
public:
    // Sends the mail and returns when that has ended, with the connection closed. Success means
    // that the server has accepted the mail, whatever came after. For one worker thread, once.
    ZelNet::SmtpStatus Send(const SmtpSettings& settings, const OutgoingMail& mail);
    // Ends Send with kAborted, unless the server has accepted the mail. Any thread, also before.
    void Abort() { notifications_.Abort(); }

private:
    using Status = ZelNet::SmtpStatus;
    using Kind = ZelNet::SmtpNotification;
    struct Notification {
        Kind kind = Kind::kNone;
        Status status = Status::kSuccess;
    };

    Status LogIn(ZelNet::ASmtpClient& client, const SmtpSettings& settings);
    Status Await(Kind kind, long timeoutSeconds);

    void Connected(Status status) override { notifications_.Put({Kind::kConnected, status}); }
    void Greeted(Status status) override { notifications_.Put({Kind::kGreeted, status}); }
    void LoggedIn(Status status) override { notifications_.Put({Kind::kLoggedIn, status}); }
    void MailSent(Status status) override { notifications_.Put({Kind::kMailSent, status}); }
    void QuitDone(Status status) override { notifications_.Put({Kind::kQuitDone, status}); }
    void Closed(Status status) override { notifications_.Put({Kind::kClosed, status}); }

    NotificationQueue<Notification> notifications_;
};

} // namespace tervane
