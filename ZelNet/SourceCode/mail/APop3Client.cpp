#include "ZelNet/SourceCode/mail/APop3Client.h"

#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/mail/CommandText.h"
#include "ZelNet/SourceCode/mail/PopStates.h"

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::MutexLock;

// RFC 1939 section 3 knows status lines of 512 bytes; some servers are more talkative.
constexpr std::uint32_t kLongestStatusLine = 1 << 20;
constexpr std::uint32_t kHighestPort = 65535;
// What a line counts besides its text: whoever splits the message may need that much for each.
constexpr std::size_t kLineOverhead = sizeof(std::string);

} // namespace

std::unique_ptr<APop3Client> APop3Client::Create() {
    std::unique_ptr<APop3Client> client(new APop3Client);
    return client->IsValid() ? std::move(client) : nullptr;
}

APop3Client::APop3Client() : AMailClient("APop3Client") {}

APop3Client::~APop3Client() {
    ReleaseSocket();
}

void APop3Client::SetServer(const std::string& server, std::uint32_t port) {
    MutexLock lock(&mutex_);
    server_ = server;
    port_ = port;
}

void APop3Client::SetLogin(const std::string& login, std::string_view password) {
    MutexLock lock(&mutex_);
    login_ = login;
    password_ = ZelBase::SecretText(password);
}

void APop3Client::ForgetPassword() {
    MutexLock lock(&mutex_);
    password_.Clear();
}

bool APop3Client::Connect(Pop3ClientListener* listener) {
    logger_->Log("Connect", LogLevel::kTrace, "Start");
    std::string server;
    std::uint32_t port = 0;
    {
        MutexLock lock(&mutex_);
        const PopStatus reason = CheckSettings(listener);
        if (reason != PopStatus::kSuccess) {
            lastError_ = reason;
            return false;
        }
        server = server_;
        port = port_;
        passwordMark_ = TextMark(password_.Text());
        listener_ = listener;
    }
    logger_->Log("Connect", LogLevel::kTrace, "Calling Create");
    unsigned long systemError = 0;
    switch (Open(server, port, systemError)) {
    case OpenResult::kUnderWay:
        return true;
    case OpenResult::kNotCreated:
        return FailConnect("Create failed rc = %lu", systemError);
    case OpenResult::kNotConnected:
        break;
    }
    return FailConnect("Connect failed rc = %lu", systemError);
}

PopStatus APop3Client::CheckSettings(const Pop3ClientListener* listener) const {
    if (!listener) {
        return PopStatus::kInvalidArguments;
    }
    if (server_.empty() || login_.empty() || password_.IsEmpty() || port_ == 0 ||
        port_ > kHighestPort || state_ != PopClientState::kClosed) {
        return PopStatus::kInvalidState;
    }
    if (!IsCredential(login_) || !IsCredential(password_.Text())) {
        return PopStatus::kInvalidArguments;
    }
    // A connection that is under way has its socket already.
    return listener_ ? PopStatus::kSocketFailure : PopStatus::kSuccess;
}

bool APop3Client::FailConnect(const char* format, unsigned long systemError) {
    MutexLock lock(&mutex_);
    logger_->Log("Connect", LogLevel::kTrace, format, systemError);
    listener_ = nullptr;
    lastError_ = PopStatus::kSocketFailure;
    return false;
}

bool APop3Client::GetMailCount() {
    return Begin("GetMailCount", PopClientState::kSendStat, 0);
}

bool APop3Client::RetrieveMessage(int index) {
    return Begin("RetrieveMessage", PopClientState::kSendRetrieve, index);
}

bool APop3Client::DeleteMessage(int index) {
    return Begin("DeleteMessage", PopClientState::kSendDelete, index);
}

bool APop3Client::Quit() {
    return Begin("Quit", PopClientState::kSendQuit, 0);
}

bool APop3Client::Begin(const char* operation, PopClientState state, int index) {
    logger_->Log(operation, LogLevel::kTrace, "Start");
    Consequences consequences;
    {
        MutexLock lock(&mutex_);
        if (!listener_ || state_ != PopClientState::kReady) {
            lastError_ = PopStatus::kInvalidState;
            return false;
        }
        index_ = index;
        state_ = state;
        Proceed(consequences);
    }
    CarryOut(consequences);
    return true;
}

PopStatus APop3Client::GetLastError() {
    MutexLock lock(&mutex_);
    return lastError_;
}

void APop3Client::HandleConnect(bool success, Consequences& consequences) {
    if (success) {
        state_ = PopClientState::kAwaitGreeting;
    }
    Notify(PopNotification::kConnected, success ? PopStatus::kSuccess : PopStatus::kConnectError,
           consequences);
}

void APop3Client::HandleLine(const std::string& line, Consequences& consequences) {
    const PopReplyRule* rule = FindPopReplyRule(state_);
    TraceLine(rule ? rule->traceName : nullptr, line);
    if (rule) {
        HandleStatusLine(*rule, line, consequences);
    }
}

// Both records at once: nothing is called between them.
void APop3Client::TraceLine(const char* stateName, const std::string& line) {
    ZelBase::LogTexts texts;
    texts.Add("rc = %lu", static_cast<unsigned long>(line.size()));
    if (stateName) {
        texts.Add("%s, Size = %lu, Line = %s", stateName, static_cast<unsigned long>(line.size()),
                  passwordMark_.IsIn(line) ? "(repeats the password)" : line.c_str());
    }
    logger_->Log("OnReceiveLine", LogLevel::kTrace, texts);
}

void APop3Client::HandleStatusLine(const PopReplyRule& rule, const std::string& line,
                                   Consequences& consequences) {
    if (!IsPositivePopReply(line)) {
        state_ = rule.nextWhenRefused;
        consequences.close = rule.closesWhenRefused;
        Notify(rule.notification, rule.refusal, consequences);
        return;
    }
    state_ = rule.next;
    if (state_ == PopClientState::kReceiveMessage) {
        messageText_.clear();
        messageSize_ = 0;
        receiving_ = true;
        return; // the message is still to come
    }
    Notify(rule.notification, PopStatus::kSuccess, consequences, line);
    RunSendStep(consequences);
}

bool APop3Client::AddTextLine(const std::string& line) {
    TraceLine("WAIT_FOR_RETR_DATA", line);
    if (line == ".") {
        return false;
    }
    // Lines that begin with a dot keep the one that the server has put before it, unlike in RFC
    // 1939 section 3: deliberate, scripts get what was received.
    messageText_.append(line).push_back('\n');
    messageSize_ += static_cast<std::uint32_t>(kLineOverhead + line.size());
    return messageSize_ <= kLongestMessage;
}

void APop3Client::HandleTextEnd(Consequences& consequences) {
    if (messageSize_ > kLongestMessage) {
        logger_->Log("OnReceiveLine", LogLevel::kTrace, "Message too long.  Closing the socket.");
        consequences.close = true;
        return;
    }
    receiving_ = false;
    state_ = PopClientState::kReady;
    Notify(PopNotification::kRetrieved, PopStatus::kSuccess, consequences);
}

void APop3Client::Notify(PopNotification notification, PopStatus status, Consequences& consequences,
                         std::string_view statusLine) noexcept {
    Pop3ClientListener* listener = listener_;
    if (!listener) {
        return;
    }
    switch (notification) {
    case PopNotification::kConnected:
        return consequences.Add(Notice([=] { listener->Connected(status); }));
    case PopNotification::kGreeted:
        return consequences.Add(Notice([=] { listener->Greeted(status); }));
    case PopNotification::kUserStep:
        return consequences.Add(Notice([=] { listener->LoginStep(false, status); }));
    case PopNotification::kPasswordStep:
        return consequences.Add(Notice([=] { listener->LoginStep(true, status); }));
    case PopNotification::kMailCount:
        return consequences.Add(Notice([=, listing = ReadDropListing(statusLine)] {
            listener->MailCount(status, listing.count, listing.totalSize);
        }));
    case PopNotification::kRetrieved:
        consequences.text = std::exchange(messageText_, {});
        return consequences.Add(Notice([=, index = index_, text = &consequences.text] {
            listener->Retrieved(status, index, *text);
        }));
    case PopNotification::kDeleted:
        return consequences.Add(Notice([=, index = index_] { listener->Deleted(index, status); }));
    case PopNotification::kQuitDone:
        return consequences.Add(Notice([=] { listener->QuitDone(status); }));
    }
}

// An idle connection that closes has ended itself: Connected tells so.
void APop3Client::HandleClose(Consequences& consequences) noexcept {
    receiving_ = false;
    messageText_.clear(); // a message that has not come whole is none
    const PopReplyRule* rule = FindPopRuleUnderWay(state_);
    const PopStatus status =
        state_ == PopClientState::kClosed ? PopStatus::kConnectError : PopStatus::kTerminated;
    Notify(rule ? rule->notification : PopNotification::kConnected, status, consequences);
    listener_ = nullptr;
    state_ = PopClientState::kClosed;
}

void APop3Client::HandleFailure(Consequences& consequences) noexcept {
    receiving_ = false;
    messageText_.clear();
    if (const PopReplyRule* rule = FindPopRuleUnderWay(state_)) {
        Notify(rule->notification, rule->refusal, consequences);
    }
}

void APop3Client::RunSendStep(Consequences& consequences) {
    const PopCommand* command = canSend_ ? FindPopCommand(state_) : nullptr;
    if (!command) {
        return;
    }
    state_ = command->next;
    consequences.command.Append(command->text);
    switch (command->argument) {
    case PopArgument::kLogin:
        consequences.command.Append(login_);
        break;
    case PopArgument::kPassword:
        consequences.command.Append(password_.Text());
        break;
    case PopArgument::kIndex:
        consequences.command.Append(std::to_string(index_));
        break;
    case PopArgument::kNone:
        break;
    }
    consequences.command.Append("\r\n");
}

std::uint32_t APop3Client::LongestLine() const {
    if (state_ != PopClientState::kReceiveMessage) {
        return kLongestStatusLine;
    }
    return messageSize_ < kLongestMessage ? kLongestMessage - messageSize_ : 0;
}

} // namespace ZelNet
