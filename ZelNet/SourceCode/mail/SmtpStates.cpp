#include "ZelNet/SourceCode/mail/SmtpStates.h"

#include <algorithm>
#include <iterator>

namespace ZelNet {
namespace {

constexpr std::size_t kTextStart = 4;

} // namespace

SmtpReplyLine ReadSmtpReply(std::string_view line) {
    SmtpReplyLine reply;
    reply.accepted = !line.empty() && line[0] >= '1' && line[0] <= '3';
    reply.hasMore = line.size() > 3 && line[3] == '-';
    reply.text = line.substr(line.size() < kTextStart ? line.size() : kTextStart);
    return reply;
}

// One pass: the line end after one dot is also the one before the next line.
void DoubleLoneDots(std::string& text, bool fromStart) {
    constexpr std::string_view kLoneDot = "\r\n.\r\n";
    std::string doubled;
    std::size_t copied = 0;
    if (fromStart && text.starts_with(kLoneDot.substr(2))) {
        doubled += '.';
    }
    for (auto found = text.find(kLoneDot); found != std::string::npos;
         found = text.find(kLoneDot, found + 3)) {
        if (doubled.empty()) {
            doubled.reserve(text.size() + text.size() / 4);
        }
        doubled.append(text, copied, found + 3 - copied) += '.';
        copied = found + 3;
    }
    if (!doubled.empty()) {
        doubled.append(text, copied);
        text = std::move(doubled);
    }
}

namespace {

using State = SmtpClientState;
using Argument = SmtpArgument;
using Tell = SmtpNotification;
using Status = SmtpStatus;
using Closing = SmtpClosing;

// The case of "MAIL From:" and the blank before each "<" are how this client has always written
// them; RFC 5321 section 3.3 has no blank, and servers accept both.
constexpr SmtpCommand kCommands[] = {
    {State::kSendMail, State::kAwaitMail, "MAIL From: <", Argument::kSender, ">\r\n"},
    {State::kSendRecipient, State::kAwaitRecipient, "RCPT TO: <", Argument::kRecipient, ">\r\n"},
    {State::kSendData, State::kAwaitData, "DATA\r\n", Argument::kNone, ""},
    {State::kSendText, State::kAwaitText, "", Argument::kText, "\r\n.\r\n"},
    {State::kSendQuit, State::kAwaitQuit, "QUIT\r\n", Argument::kNone, ""},
    {State::kSendAuth, State::kAwaitAuth, "AUTH LOGIN\r\n", Argument::kNone, ""},
    {State::kSendLogin, State::kAwaitLogin, "", Argument::kLogin, "\r\n"},
    {State::kSendPassword, State::kAwaitPassword, "", Argument::kPassword, "\r\n"},
};
constexpr SmtpCommand kHello = {State::kSendHello, State::kAwaitHello, "HELO ", Argument::kHostName,
                                "\r\n"};
constexpr SmtpCommand kExtendedHello = {State::kSendHello, State::kAwaitHello, "EHLO ",
                                        Argument::kHostName, "\r\n"};

constexpr SmtpReplyRule kReplyRules[] = {
    {State::kAwaitGreeting, true, State::kSendHello, State::kAwaitGreeting, Tell::kGreeted,
     Tell::kGreeted, Status::kConnectError, Closing::kWhenRefused},
    {State::kAwaitMail, false, State::kSendRecipient, State::kReady, Tell::kNone, Tell::kMailSent,
     Status::kUnexpected, Closing::kNever},
    {State::kAwaitRecipient, false, State::kSendData, State::kReady, Tell::kNone, Tell::kMailSent,
     Status::kUnexpected, Closing::kNever},
    {State::kAwaitData, false, State::kSendText, State::kReady, Tell::kNone, Tell::kMailSent,
     Status::kUnexpected, Closing::kNever},
    {State::kAwaitText, false, State::kReady, State::kReady, Tell::kMailSent, Tell::kMailSent,
     Status::kUnexpected, Closing::kNever},
    {State::kAwaitQuit, false, State::kReady, State::kReady, Tell::kQuitDone, Tell::kQuitDone,
     Status::kUnexpected, Closing::kAlways},
    {State::kAwaitAuth, true, State::kSendLogin, State::kAwaitAuth, Tell::kNone, Tell::kLoggedIn,
     Status::kConnectError, Closing::kWhenRefused},
    {State::kAwaitLogin, false, State::kSendPassword, State::kAwaitLogin, Tell::kNone,
     Tell::kLoggedIn, Status::kAuthenticationError, Closing::kWhenRefused},
    {State::kAwaitPassword, false, State::kReady, State::kAwaitPassword, Tell::kLoggedIn,
     Tell::kLoggedIn, Status::kAuthenticationError, Closing::kWhenRefused},
};
constexpr SmtpReplyRule kHelloRule = {State::kAwaitHello,    true,
                                      State::kReady,         State::kAwaitHello,
                                      Tell::kLoggedIn,       Tell::kLoggedIn,
                                      Status::kConnectError, Closing::kWhenRefused};
constexpr SmtpReplyRule kExtendedHelloRule = {State::kAwaitHello,    true,
                                              State::kSendAuth,      State::kAwaitHello,
                                              Tell::kNone,           Tell::kLoggedIn,
                                              Status::kConnectError, Closing::kWhenRefused};

template <typename Row, std::size_t Size>
const Row* Find(const Row (&rows)[Size], State state) {
    const auto* row = std::find_if(std::begin(rows), std::end(rows),
                                   [state](const Row& next) { return next.state == state; });
    return row == std::end(rows) ? nullptr : row;
}

} // namespace

const SmtpCommand* FindSmtpCommand(SmtpClientState state, bool useAuth) {
    if (state == kHello.state) {
        return useAuth ? &kExtendedHello : &kHello;
    }
    return Find(kCommands, state);
}

const SmtpReplyRule* FindSmtpReplyRule(SmtpClientState state, bool useAuth) {
    if (state == kHelloRule.state) {
        return useAuth ? &kExtendedHelloRule : &kHelloRule;
    }
    return Find(kReplyRules, state);
}

const char* NameOf(SmtpClientState state) {
    static constexpr const char* kNames[] = {
        "CLOSED",
        "WAIT_FOR_GREETING",
        "SEND_HELO",
        "WAIT_FOR_HELO_RESPONSE",
        "READY",
        "",
        "",
        "SEND_MAIL",
        "WAIT_FOR_MAIL_RESPONSE",
        "SEND_RCPT",
        "WAIT_FOR_RCPT_RESPONSE",
        "SEND_DATA",
        "WAIT_FOR_DATA_RESPONSE",
        "SEND_TEXT",
        "WAIT_FOR_TEXT_RESPONSE",
        "SEND_QUIT",
        "WAIT_FOR_QUIT_RESPONSE",
        "SEND_AUTH",
        "WAIT_FOR_AUTH_RESPONSE",
        "SEND_USER",
        "WAIT_FOR_USER_RESPONSE",
        "SEND_PASS",
        "WAIT_FOR_PASS_RESPONSE",
    };
    return kNames[static_cast<std::size_t>(state)];
}

} // namespace ZelNet
