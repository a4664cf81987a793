#pragma once

#include "ZelNet/SourceCode/mail/SmtpStatus.h"

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

} // namespace ZelNet
