#pragma once

// The SMTP conversation (RFC 5321, with AUTH LOGIN) as tables: in some states a command is due, in
// the others a reply, and each row says what follows. The numbers are those in trace records.

#include <optional>
#include <string>
#include <string_view>

namespace ZelNet {

// How a step of sending a mail ended. The client itself reports 0 to 8; the others are for those
// who drive it.
enum class SmtpStatus {
    kSuccess = 0,
    kSocketFailure = 1,
    kConnectError = 2,
    kTerminated = 3, // the connection was closed
    kInvalidArguments = 4,
    kBusy = 5,
    kInvalidState = 6,
    kUnexpected = 7, // the server refused
    kAuthenticationError = 8,
    kTimeout = 9,
    kInternalError = 10,
    kWorkInProgress = 11,
    kAborted = 12,
};

// One line of a server's reply (RFC 5321, section 4.2): three digits, a hyphen when more lines
// follow, and text.
struct SmtpReplyLine {
    // 1xx, 2xx or 3xx. Which of these it is makes no difference to any command, on purpose: the
    // servers of the field do not agree on the exact codes.
    bool accepted = false;
    bool hasMore = false;
    std::string_view text;
};

// Every line can be read, also none at all. The text points into `line`.
SmtpReplyLine ReadSmtpReply(std::string_view line);

// Doubles the dot of each line that consists of one, so that it does not end the text (RFC 5321,
// section 4.5.2). Lines that only begin with a dot are left alone, unlike in the RFC: deliberate.
// `fromStart` tells whether the text's very first line counts too.
void DoubleLoneDots(std::string& text, bool fromStart);

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
