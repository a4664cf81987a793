#include "ZelNet/SourceCode/sockets/ADns.h"

#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/ComponentLogger.h"

#include <algorithm>

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::MutexLock;

// How long an event waits for the mutex before it is dropped.
constexpr std::uint32_t kCallbackTimeoutMs = 250;
// Longer datagrams than this are not answers to questions without extensions (RFC 1035, 4.2.1).
constexpr std::uint32_t kLongestDatagram = 1000;

const char kUnknownServer[] = "0.0.0.0";

} // namespace

std::unique_ptr<ADns> ADns::Create() {
    return Create(UdpNonBlockingClientSocket::Create());
}

std::unique_ptr<ADns> ADns::Create(std::shared_ptr<UdpNonBlockingClientSocket> socket) {
    std::unique_ptr<ADns> dns(new ADns(std::move(socket)));
    const bool valid = dns->logger_ && dns->mutex_.IsValid() && dns->socket_;
    return valid ? std::move(dns) : nullptr;
}

ADns::ADns(std::shared_ptr<UdpNonBlockingClientSocket> socket)
    : logger_(CreateLogger("ADns")), socket_(std::move(socket)) {}

ADns::~ADns() {
    if (socket_) {
        Report(false, {});
    }
}

bool ADns::HasUsableServer(const std::vector<std::string>& servers) {
    return std::any_of(servers.begin(), servers.end(),
                       [](const std::string& server) { return server != kUnknownServer; });
}

bool ADns::SetDnsServers(const std::vector<std::string>& servers) {
    MutexLock lock(&mutex_);
    if (busy_) {
        return false;
    }
    servers_.clear();
    for (const std::string& server : servers) {
        const bool known = server != kUnknownServer;
        logger_->Log("SetDnsServers", known ? LogLevel::kTrace : LogLevel::kWarning,
                     known ? "Adding Target DNS Server: %s"
                           : "Ignoring Known Invalid Target DNS Server: %s",
                     server.c_str());
        if (known) {
            servers_.push_back(server);
        }
    }
    return true;
}

bool ADns::ResolveName(const std::string& name, Callback callback, void* parameter) {
    try {
        if (!BeginLookUp(name, callback, parameter)) {
            return false;
        }
    } catch (const std::bad_alloc&) {
        logger_->Log("ResolveName", LogLevel::kError, "Out of memory.");
        return false;
    }
    // Without the mutex: the socket reports that it can send before Create returns.
    if (!socket_->Create(this, 0, IpAddress())) {
        // An Abort from another thread may have called the callback already.
        const bool told = !TakeRecipient();
        busy_ = false;
        return told;
    }
    return true;
}

bool ADns::BeginLookUp(const std::string& name, Callback callback, void* parameter) {
    auto recipient = std::make_unique<Recipient>(Recipient{callback, parameter});
    MutexLock lock(&mutex_);
    if (servers_.empty() || !BuildDnsQuery(name)) {
        return false;
    }
    logger_->Log("ResolveName", LogLevel::kTrace, "Resolving %s", name.c_str());
    if (busy_) {
        return false;
    }
    name_ = name;
    querySent_ = false;
    emptyAnswers_ = 0;
    busy_ = true;
    recipient_ = recipient.release();
    return true;
}

bool ADns::Abort() {
    if (!recipient_.load()) {
        return false;
    }
    logger_->Log("Abort", LogLevel::kTrace, "Aborting DNS Resolution.");
    return Report(false, {});
}

void ADns::OnSend(void* /*context*/, int error) {
    if (!mutex_.Lock(kCallbackTimeoutMs, nullptr)) {
        return;
    }
    bool failed = false;
    bool aborted = false;
    {
        ZelBase::MutexReleaser releaser(mutex_);
        aborted = !recipient_.load();
        failed = !aborted && !querySent_ && !SendQuery(error);
    }
    if (failed) {
        Report(false, {});
    }
    if (aborted) {
        socket_->Close(true); // the abort came before there was a socket to close
    }
}

// Asks all servers. False when not even one question got out.
bool ADns::SendQuery(int error) {
    logger_->Log("OnSend", LogLevel::kTrace, "Socket is ready to send (Error Code = %lu)",
                 static_cast<unsigned long>(error));
    const auto query = BuildDnsQuery(name_);
    if (error != 0 || !query) {
        return false;
    }
    for (const std::string& server : servers_) {
        const auto size = static_cast<std::uint32_t>(query->size());
        querySent_ |= socket_->SendTo(server, kDnsPort, query->data(), size) != 0;
    }
    if (querySent_) {
        logger_->Log("OnSend", LogLevel::kTrace, "Send Complete");
    }
    return querySent_;
}

void ADns::OnReceive(void* /*context*/, int error) {
    if (!mutex_.Lock(kCallbackTimeoutMs, nullptr)) {
        return;
    }
    std::vector<DnsRecord> records;
    Progress progress = Progress::kWaiting;
    {
        ZelBase::MutexReleaser releaser(mutex_);
        if (recipient_.load()) {
            progress = ReadAnswer(error, records);
        }
    }
    if (progress != Progress::kWaiting) {
        Report(progress == Progress::kSucceeded, records);
    }
}

// Takes one datagram. The sender and the name tell whether it answers this question; the
// identifier, which is always the same, is not looked at.
ADns::Progress ADns::ReadAnswer(int error, std::vector<DnsRecord>& records) {
    logger_->Log("OnReceive", LogLevel::kTrace,
                 "There is data to pull from socket (Error Code = %lu)",
                 static_cast<unsigned long>(error));
    if (error != 0) {
        logger_->Log("OnReceive", LogLevel::kError, "Error detected (Error Code = %lu)",
                     static_cast<unsigned long>(error));
        return Progress::kFailed;
    }
    std::uint8_t datagram[kLongestDatagram];
    IpAddress sender;
    std::uint16_t port = 0;
    const std::uint32_t size = socket_->ReceiveFrom(datagram, sizeof datagram, sender, port);
    logger_->Log("OnReceive", LogLevel::kTrace, "Read %lu bytes from socket",
                 static_cast<unsigned long>(size));
    if (size == 0) {
        logger_->Log("OnReceive", LogLevel::kTrace, "There is no data to pull from socket");
        return Progress::kWaiting;
    }
    if (!WasAsked(sender, port)) {
        logger_->Log("OnReceive", LogLevel::kWarning, "Ignoring an answer of %s, port %lu.",
                     sender.GetText().c_str(), static_cast<unsigned long>(port));
        return Progress::kWaiting;
    }
    auto reply = ParseDnsReply({datagram, size});
    if (!reply || reply->question != name_) {
        return Progress::kWaiting;
    }
    records = TakeRecords(*reply);
    if (!records.empty()) {
        return Progress::kSucceeded;
    }
    // Another server may know more.
    ++emptyAnswers_;
    return emptyAnswers_ < servers_.size() ? Progress::kWaiting : Progress::kSucceeded;
}

// Whoever can send datagrams here could answer for any name otherwise (RFC 5452, section 9.1).
bool ADns::WasAsked(const IpAddress& server, std::uint16_t port) const {
    return port == kDnsPort &&
           std::any_of(servers_.begin(), servers_.end(), [&](const std::string& text) {
               const IpAddress asked(text);
               return asked.IsValid() && asked == server;
           });
}

std::vector<DnsRecord> ADns::TakeRecords(DnsReply& reply) const {
    std::vector<DnsRecord> records;
    for (DnsAnswer& answer : reply.answers) {
        DnsRecord record;
        record.type = answer.type;
        if (answer.type == kDnsTypeAlias) {
            logger_->Log("OnReceive", LogLevel::kTrace, "Found CNAME %s.", answer.alias.c_str());
            record.alias = std::move(answer.alias);
        } else if (answer.type == kDnsTypeAddress) {
            record.address.SetAddress(answer.address);
            logger_->Log("OnReceive", LogLevel::kTrace, "Found Address %s.",
                         record.address.GetText().c_str());
        } else {
            logger_->Log("OnReceive", LogLevel::kWarning, "Unknown data of %lu bytes in length.",
                         static_cast<unsigned long>(answer.dataLength));
            continue;
        }
        records.push_back(std::move(record));
    }
    return records;
}

// Ends the look-up and calls the callback, if nobody has before.
bool ADns::Report(bool success, const std::vector<DnsRecord>& records) {
    const auto recipient = TakeRecipient();
    if (!recipient) {
        return false;
    }
    socket_->Close(true);
    Tell(*recipient, success, records);
    return true;
}

std::unique_ptr<ADns::Recipient> ADns::TakeRecipient() {
    return std::unique_ptr<Recipient>(recipient_.exchange(nullptr));
}

// Nothing of the object is touched after the callback, which may have released it.
void ADns::Tell(const Recipient& recipient, bool success, const std::vector<DnsRecord>& records) {
    const auto logger = logger_;
    logger->Log("Report", LogLevel::kTrace,
                success ? "Socket has been closed." : "Socket is closed");
    recipient.callback(success, recipient.parameter, records);
    logger->Log("Report", LogLevel::kTrace,
                success ? "Callback has been notified of success."
                        : "Callback has been notified of error.");
}

// This event alone is never dropped, because nothing else would let the next look-up begin.
void ADns::OnClose(void* /*context*/, int error) {
    logger_->Log("OnClose", LogLevel::kTrace,
                 "The socket is closed, no longer pending (Error Code = %lu)",
                 static_cast<unsigned long>(error));
    // The layer may close the socket under a look-up that has not ended. Its recipient is taken
    // before the next look-up can begin.
    const auto recipient = TakeRecipient();
    busy_ = false;
    if (recipient) {
        Tell(*recipient, false, {});
    }
}

} // namespace ZelNet
