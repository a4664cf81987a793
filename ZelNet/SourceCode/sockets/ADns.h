#pragma once

// Looks a name up without the system's resolver: one query over UDP goes to every given DNS server
// at once, and the first answer that has records is taken. That lets a diagnostic ask a particular
// server, and tell "no server answered" from "the name does not exist".
//
// There is no time-out in here; whoever waits calls Abort. One object does one look-up at a time.

#include "ZelBase/log/Logger.h"
#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/sockets/DnsMessage.h"
#include "ZelNet/SourceCode/sockets/UdpNonBlockingClientSocket.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace ZelNet {

struct DnsRecord {
    std::uint16_t type = 0; // kDnsTypeAddress or kDnsTypeAlias
    IpAddress address;      // of an address record
    std::string alias;      // of an alias record: the canonical name
};

class ADns final : private UdpNonBlockingSocketListener {
public:
    // Called once per look-up that has started: with the records of the first answer that has any,
    // with none when every server has answered without records, or with success false. It runs on
    // a socket event thread, or in Abort, must not block, and may release the ADns.
    using Callback = void (*)(bool success, void* parameter, const std::vector<DnsRecord>& records);

    // Null when the system cannot provide one.
    static std::unique_ptr<ADns> Create();
    // The same over a socket that is not open yet; tests put their own here.
    static std::unique_ptr<ADns> Create(std::shared_ptr<UdpNonBlockingClientSocket> socket);
    // Aborts a look-up, and waits for a callback that is running on another thread.
    ~ADns();
    ADns(const ADns&) = delete;
    ADns& operator=(const ADns&) = delete;

    // Whether any of the servers can be asked: systems without one may name "0.0.0.0".
    static bool HasUsableServer(const std::vector<std::string>& servers);

    // The servers' dotted addresses; "0.0.0.0" is left out. False during a look-up.
    bool SetDnsServers(const std::vector<std::string>& servers);
    // Starts a look-up. False, without a callback, when there is no server, when no question can be
    // made from the name, during a look-up, and when the socket cannot be opened or memory runs
    // out.
    bool ResolveName(const std::string& name, Callback callback, void* parameter);
    // Ends a look-up with failure. Whether there was one.
    bool Abort();

private:
    explicit ADns(std::shared_ptr<UdpNonBlockingClientSocket> socket);

    void OnClose(void* context, int error) override;
    void OnReceive(void* context, int error) override;
    void OnSend(void* context, int error) override;

    bool BeginLookUp(const std::string& name, Callback callback, void* parameter)
        ZELBASE_EXCLUDES(mutex_);
    bool SendQuery(int error) ZELBASE_REQUIRES(mutex_);
    enum class Progress { kWaiting, kSucceeded, kFailed };
    Progress ReadAnswer(int error, std::vector<DnsRecord>& records) ZELBASE_REQUIRES(mutex_);
    bool WasAsked(const IpAddress& server, std::uint16_t port) const ZELBASE_REQUIRES(mutex_);
    std::vector<DnsRecord> TakeRecords(DnsReply& reply) const;
    // Who is to be told of the look-up's end.
    struct Recipient {
        Callback callback;
        void* parameter;
    };
    // Null when the recipient has been told, or need not be.
    std::unique_ptr<Recipient> TakeRecipient();
    bool Report(bool success, const std::vector<DnsRecord>& records) ZELBASE_EXCLUDES(mutex_);
    void Tell(const Recipient& recipient, bool success, const std::vector<DnsRecord>& records)
        ZELBASE_EXCLUDES(mutex_);

    // Shared, because the callback may release this object before the last record is logged.
    std::shared_ptr<ZelBase::Logger> logger_;
    // Not held while the callback is called.
    ZelBase::WIN32_Mutex mutex_;
    std::vector<std::string> servers_ ZELBASE_GUARDED_BY(mutex_);
    std::string name_ ZELBASE_GUARDED_BY(mutex_);
    bool querySent_ ZELBASE_GUARDED_BY(mutex_) = false;
    std::size_t emptyAnswers_ ZELBASE_GUARDED_BY(mutex_) = 0;
    // From ResolveName until the socket has closed; it begins under the mutex. The end of a look-up
    // waits for no lock: it must not get lost, and nobody may hold it up.
    std::atomic<bool> busy_ = false;
    // Owned; whoever takes it out tells it.
    std::atomic<Recipient*> recipient_ = nullptr;
    // Last, so that its callbacks are over before anything else goes.
    std::shared_ptr<UdpNonBlockingClientSocket> socket_;
};

} // namespace ZelNet
