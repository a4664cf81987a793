#pragma once

// The SMTP conversation (RFC 5321, with AUTH LOGIN) as tables: in some states a command is due, in
// the others a reply, and each row says what follows. The numbers are those in trace records.

#include "ZelNet/SourceCode/mail/SmtpStatus.h"

#include <optional>
#include <string_view>

namespace ZelNet {

enum class SmtpClientState {
    kClosed = 0,
    kAwaitGreeting = 1,
    kSendHello = 2,
    kAwaitHello = 3,
    kReady = 4,
    kSendMail = 7,
    kAwaitMail = 8,
    kSendRecipient = 9,
    kAwaitRecipient = 10,
    kSendData = 11,
    kAwaitData = 12,
    kSendText = 13,
    kAwaitText = 14,
    kSendQuit = 15,
    kAwaitQuit = 16,
    kSendAuth = 17,
    kAwaitAuth = 18,
    kSendLogin = 19,
    kAwaitLogin = 20,
    kSendPassword = 21,
    kAwaitPassword = 22,
};

// What the connection is for at the moment; it decides whom a close concerns.
enum class SmtpClientPhase { kConnecting = 0, kSending = 1, kQuitting = 2 };

// What the client tells its listener.
enum class SmtpNotification {
    kNone,
    kConnected,
    kGreeted,
    kLoggedIn,
    kMailSent,
    kQuitDone,
    kClosed
};

// What stands in a command between its fixed texts.
enum class SmtpArgument { kNone, kHostName, kSender, kRecipient, kLogin, kPassword, kText };

struct SmtpCommand {
    SmtpClientState state; // in which it is due
    SmtpClientState next;
    std::string_view before;
    SmtpArgument argument;
    std::string_view after;
};

enum class SmtpClosing { kNever, kWhenRefused, kAlways };

struct SmtpReplyRule {
    SmtpClientState state; // in which the reply is awaited
    // Only three replies are waited for until their last line; the others count by their first.
    // This asymmetry is deliberate: servers of the field are known to work with it.
    bool waitsForLastLine;
    SmtpClientState next;
    SmtpClientState nextWhenRefused;
    SmtpNotification success;
    SmtpNotification failure;
    SmtpStatus refusal;
    SmtpClosing closing;
};

// The command that is due in `state`; null when none is.
const SmtpCommand* FindSmtpCommand(SmtpClientState state, bool useAuth);
// What a reply in `state` leads to; null when none is awaited.
const SmtpReplyRule* FindSmtpReplyRule(SmtpClientState state, bool useAuth);
// For trace records.
const char* NameOf(SmtpClientState state);

} // namespace ZelNet
