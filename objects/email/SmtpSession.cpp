#include "objects/email/SmtpSession.h"

#include "ZelNet/SourceCode/sockets/InitializeSockets.h"

namespace tervane {

using ZelNet::ASmtpClient;
using ZelNet::SmtpStatus;

SmtpStatus SmtpSession::Send(const SmtpSettings& settings, const OutgoingMail& mail) {
    const ZelNet::SocketLayerUse sockets;
    const auto client = ASmtpClient::Create(); // its end closes the connection
    if (!sockets || !client) {
        return sockets ? SmtpStatus::kInternalError : SmtpStatus::kSocketFailure;
    }
    client->SetFrom(mail.sender.c_str());
    const SmtpStatus loggedIn = LogIn(*client, settings);
    if (loggedIn != SmtpStatus::kSuccess) {
        return loggedIn;
    }
    // When the client refuses, the connection has been closed and it is about to tell so.
    client->SendMail(mail.recipient, mail.message.get());
    const SmtpStatus sent = Await(Kind::kMailSent, settings.timeoutSeconds);
    if (sent == SmtpStatus::kSuccess || sent == SmtpStatus::kUnexpected) {
        client->Quit();
        Await(Kind::kClosed, settings.timeoutSeconds); // what the server thinks of it is no matter
    }
    return sent;
}

SmtpStatus SmtpSession::LogIn(ASmtpClient& client, const SmtpSettings& settings) {
    const bool useAuth = !settings.login.empty() && !settings.password.IsEmpty();
    client.SetServer(settings.server.c_str());
    client.SetPort(settings.port);
    client.SetLogin(useAuth ? settings.login.c_str() : "");
    client.SetPassword(useAuth ? settings.password.CStr() : "");
    if (!client.Connect(this, useAuth)) {
        return client.GetLastError();
    }
    for (const Kind step : {Kind::kConnected, Kind::kGreeted, Kind::kLoggedIn}) {
        const SmtpStatus status = Await(step, settings.timeoutSeconds);
        if (status != SmtpStatus::kSuccess) {
            return status;
        }
    }
    return SmtpStatus::kSuccess;
}

// A failure ends every step, whichever notification brings it.
SmtpStatus SmtpSession::Await(Kind kind, long timeoutSeconds) {
    const StepDeadline deadline(timeoutSeconds);
    for (;;) {
        Notification notification;
        switch (notifications_.Wait(deadline, notification)) {
        case QueueWait::kAborted:
            return SmtpStatus::kAborted;
        case QueueWait::kTimedOut:
            return SmtpStatus::kTimeout;
        case QueueWait::kNoMemory:
            return SmtpStatus::kInternalError;
        case QueueWait::kNotified:
            break;
        }
        if (notification.status != SmtpStatus::kSuccess || notification.kind == kind) {
            return notification.status;
        }
    }
}

} // namespace tervane
