#include "ZelNet/SourceCode/mail/ASmtpClient.h"

#include "ZelBase/text/Base64.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/mail/CommandText.h"
#include "ZelNet/SourceCode/mail/PlainMessage.h"
#include "ZelNet/SourceCode/mail/SmtpStates.h"
#include "ZelNet/SourceCode/sockets/NetworkInfo.h"

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::MutexLock;

// RFC 5321 section 4.5.3.1.5 knows reply lines of 512 bytes; some servers are more talkative.
constexpr std::uint32_t kLongestReplyLine = 1 << 20;
constexpr std::uint32_t kHighestPort = 65535;

// What the client calls itself when the computer has no name.
constexpr char kNamelessHost[] = "localhost";

std::string LocalHostName() {
    const auto network = NetworkInfo::Create();
    std::string name = network ? network->HostName() : std::string();
    return name.empty() ? kNamelessHost : name;
}

} // namespace

std::unique_ptr<ASmtpClient> ASmtpClient::Create() {
    std::unique_ptr<ASmtpClient> client(new ASmtpClient);
    return client->IsValid() ? std::move(client) : nullptr;
}

ASmtpClient::ASmtpClient() : AMailClient("ASmtpClient") {}

ASmtpClient::~ASmtpClient() {
    ReleaseSocket();
}

bool ASmtpClient::SetServer(const char* server) {
    return Set(&ASmtpClient::server_, server);
}

bool ASmtpClient::SetLogin(const char* login) {
    return Set(&ASmtpClient::login_, login);
}

bool ASmtpClient::SetPassword(const char* password) {
    return Set(&ASmtpClient::password_, password);
}

bool ASmtpClient::SetFrom(const char* from) {
    return Set(&ASmtpClient::from_, from);
}

bool ASmtpClient::SetTo(const char* to) {
    return Set(&ASmtpClient::to_, to);
}

bool ASmtpClient::SetSubject(const char* subject) {
    return Set(&ASmtpClient::subject_, subject);
}

bool ASmtpClient::SetBody(const char* body) {
    return Set(&ASmtpClient::body_, body);
}

template <typename Text>
bool ASmtpClient::Set(Text ASmtpClient::*field, const char* value) {
    MutexLock lock(&mutex_);
    if (!value) {
        return Refuse(SmtpStatus::kInvalidArguments);
    }
    if (listener_) {
        return Refuse(SmtpStatus::kBusy);
    }
    this->*field = Text(value);
    return true;
}

bool ASmtpClient::SetPort(std::uint32_t port) {
    MutexLock lock(&mutex_);
    if (listener_) {
        return Refuse(SmtpStatus::kBusy);
    }
    port_ = port;
    return true;
}

bool ASmtpClient::Connect(SmtpClientListener* listener, bool useAuth) {
    std::string server;
    std::uint32_t port = 0;
    std::string hostName = LocalHostName();
    {
        MutexLock lock(&mutex_);
        const SmtpStatus reason = listener ? CheckSettings(useAuth) : SmtpStatus::kInvalidArguments;
        if (reason != SmtpStatus::kSuccess) {
            return Refuse(reason);
        }
        server = server_;
        port = port_;
        listener_ = listener;
        useAuth_ = useAuth;
        phase_ = SmtpClientPhase::kConnecting;
        hostName_ = std::move(hostName);
    }
    unsigned long systemError = 0;
    if (Open(server, port, systemError) == OpenResult::kUnderWay) {
        return true;
    }
    MutexLock lock(&mutex_);
    logger_->Log("Connect", LogLevel::kError, "Could not connect, rc = %lu", systemError);
    listener_ = nullptr;
    return Refuse(SmtpStatus::kSocketFailure);
}

SmtpStatus ASmtpClient::CheckSettings(bool useAuth) const {
    if (server_.empty() || port_ == 0 || port_ > kHighestPort ||
        (useAuth && (login_.empty() || password_.IsEmpty())) ||
        state_ != SmtpClientState::kClosed) {
        return SmtpStatus::kInvalidState;
    }
    if (!IsCredential(login_) || !IsCredential(password_.Text())) {
        return SmtpStatus::kInvalidArguments;
    }
    // A connection that is under way has its socket already.
    return listener_ ? SmtpStatus::kSocketFailure : SmtpStatus::kSuccess;
}

bool ASmtpClient::SendMail(const std::string& recipient, AMIME* message) {
    Consequences consequences;
    {
        MutexLock lock(&mutex_);
        if (!listener_ || state_ != SmtpClientState::kReady || !message) {
            return Refuse(SmtpStatus::kInvalidState);
        }
        if (!IsEnvelopeAddress(from_) || !IsEnvelopeAddress(recipient)) {
            logger_->Log("SendMail", LogLevel::kWarning, "Address cannot be sent.");
            Notify(SmtpNotification::kMailSent, SmtpStatus::kUnexpected, consequences);
        } else {
            recipient_ = recipient;
            message_ = message;
            phase_ = SmtpClientPhase::kSending;
            ChangeState(SmtpClientState::kSendMail);
            Proceed(consequences);
        }
    }
    CarryOut(consequences);
    return true;
}

bool ASmtpClient::Quit() {
    Consequences consequences;
    bool underWay = false;
    {
        MutexLock lock(&mutex_);
        underWay = listener_ && state_ == SmtpClientState::kReady;
        if (underWay) {
            phase_ = SmtpClientPhase::kQuitting;
            ChangeState(SmtpClientState::kSendQuit);
            Proceed(consequences);
        } else {
            consequences.close = true;
            Refuse(SmtpStatus::kInvalidState);
        }
    }
    CarryOut(consequences);
    return underWay;
}

SmtpStatus ASmtpClient::GetLastError() {
    MutexLock lock(&mutex_);
    return lastError_;
}

std::string ASmtpClient::LastResponse() {
    MutexLock lock(&mutex_);
    return lastResponse_;
}

bool ASmtpClient::Refuse(SmtpStatus reason) {
    lastError_ = reason;
    return false;
}

void ASmtpClient::ChangeState(SmtpClientState state) {
    if (state_ != state) {
        state_ = state;
        logger_->Log("ChangeState", LogLevel::kTrace, "%s", NameOf(state));
    }
}

void ASmtpClient::Notify(SmtpNotification notification, SmtpStatus status,
                         Consequences& consequences) noexcept {
    using Method = void (SmtpClientListener::*)(SmtpStatus);
    static constexpr Method kMethods[] = {
        nullptr,
        &SmtpClientListener::Connected,
        &SmtpClientListener::Greeted,
        &SmtpClientListener::LoggedIn,
        &SmtpClientListener::MailSent,
        &SmtpClientListener::QuitDone,
        &SmtpClientListener::Closed,
    };
    const Method method = kMethods[static_cast<std::size_t>(notification)];
    if (method && listener_) {
        consequences.Add(
            Notice([listener = listener_, method, status] { (listener->*method)(status); }));
    }
}

void ASmtpClient::HandleConnect(bool success, Consequences& consequences) {
    if (!success) {
        Notify(SmtpNotification::kConnected, SmtpStatus::kConnectError, consequences);
        return;
    }
    ChangeState(SmtpClientState::kAwaitGreeting);
    Notify(SmtpNotification::kConnected, SmtpStatus::kSuccess, consequences);
}

void ASmtpClient::HandleLine(const std::string& line, Consequences& consequences) {
    const SmtpReplyLine reply = ReadSmtpReply(line);
    lastResponse_ = reply.text;
    const SmtpReplyRule* rule = FindSmtpReplyRule(state_, useAuth_);
    if (!rule || (reply.accepted && reply.hasMore && rule->waitsForLastLine)) {
        return; // not asked for, or not complete
    }
    if (reply.accepted) {
        ChangeState(rule->next);
        Notify(rule->success, SmtpStatus::kSuccess, consequences);
    } else {
        ChangeState(rule->nextWhenRefused);
        Notify(rule->failure, rule->refusal, consequences);
    }
    consequences.close = rule->closing == SmtpClosing::kAlways ||
                         (!reply.accepted && rule->closing == SmtpClosing::kWhenRefused);
    if (!consequences.close) {
        RunSendStep(consequences);
    }
}

void ASmtpClient::HandleClose(Consequences& consequences) noexcept {
    static constexpr SmtpNotification kConcerned[] = {
        SmtpNotification::kConnected, SmtpNotification::kMailSent, SmtpNotification::kNone};
    Notify(kConcerned[static_cast<std::size_t>(phase_)], SmtpStatus::kTerminated, consequences);
    Notify(SmtpNotification::kClosed,
           phase_ == SmtpClientPhase::kQuitting ? SmtpStatus::kSuccess : SmtpStatus::kTerminated,
           consequences);
    phase_ = SmtpClientPhase::kConnecting;
    listener_ = nullptr;
    ChangeState(SmtpClientState::kClosed);
}

void ASmtpClient::HandleFailure(Consequences& consequences) noexcept {
    const SmtpCommand* command = FindSmtpCommand(state_, useAuth_);
    const SmtpReplyRule* rule = FindSmtpReplyRule(command ? command->next : state_, useAuth_);
    if (rule) {
        Notify(rule->failure, rule->refusal, consequences);
    }
}

void ASmtpClient::RunSendStep(Consequences& consequences) {
    const SmtpCommand* command = canSend_ ? FindSmtpCommand(state_, useAuth_) : nullptr;
    if (!command) {
        return;
    }
    ChangeState(command->next);
    if (command->argument == SmtpArgument::kText) {
        ComposeText(consequences);
        consequences.end = command->after;
    } else {
        consequences.command.Append(command->before);
        AppendValue(command->argument, consequences.command);
        consequences.command.Append(command->after);
    }
}

void ASmtpClient::AppendValue(SmtpArgument argument, ZelBase::SecretText& command) const {
    switch (argument) {
    case SmtpArgument::kHostName:
        return command.Append(hostName_);
    case SmtpArgument::kSender:
        return command.Append(from_);
    case SmtpArgument::kRecipient:
        return command.Append(recipient_);
    case SmtpArgument::kLogin:
        return command.Append(ZelBase::Base64Encode(login_));
    case SmtpArgument::kPassword: {
        std::string encoded = ZelBase::Base64Encode(password_.Text());
        const ZelBase::WipeAtEnd wipe(encoded);
        return command.Append(encoded);
    }
    case SmtpArgument::kNone:
    case SmtpArgument::kText:
        break;
    }
}

// In the body only lines between others are looked at, so that a lone dot on its very first line
// goes out as it is: deliberate. In the header block, which nobody would expect to hold one, every
// lone dot is doubled, lest it end the text early.
void ASmtpClient::ComposeText(Consequences& consequences) {
    if (!message_) {
        ownMessage_ =
            MakePlainMessage(from_, to_, subject_, body_, std::chrono::system_clock::now());
    }
    AMIME& message = message_ ? *message_ : *ownMessage_;
    consequences.header = message.HeaderBlock();
    DoubleLoneDots(consequences.header, true);
    consequences.body = MimeText::Read(message.TextToSend());
}

std::uint32_t ASmtpClient::LongestLine() const {
    return kLongestReplyLine;
}

} // namespace ZelNet
