#pragma once

// From the message object of a script to what is sent. It is read on the script's thread when the
// sending is asked for, so that what the script changes later is not half in the mail.

#include "objects/email/SmtpSession.h"

#include <TERVANELib.h>

#include <optional>

namespace tervane {

// Reads the message, after giving it a date and an X-Mailer if it has none. Nothing when it cannot
// be read.
std::optional<OutgoingMail> ReadOutgoingMail(IEmailData& emailData);

} // namespace tervane
