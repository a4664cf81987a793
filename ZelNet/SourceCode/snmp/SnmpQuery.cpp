#include "ZelNet/SourceCode/snmp/SnmpQuery.h"

#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/ComponentLogger.h"

namespace ZelNet {
namespace {

using ZelBase::LogLevel;
using ZelBase::TimedMutexLock;

// The root of all Internet management information.
constexpr const char* kInternet = "1.3.6.1";

class SharedAgent {
public:
    // Null when the system has no agent.
    std::shared_ptr<SnmpSession> AddUser() {
        const TimedMutexLock lock(mutex_.get(), ZelBase::kInfinite);
        if (!lock) {
            return nullptr;
        }
        std::shared_ptr<SnmpSession> session = session_.lock();
        if (users_ == 0) {
            session = SnmpSession::Open(SnmpAgent::Load());
            session_ = session;
        }
        ++users_; // not before: who fails to load, or is killed while loading, is no user
        return session;
    }
    // `session` is the user's; the last user's unloads the agent, before the next one loads it.
    void RemoveUser(std::shared_ptr<SnmpSession>& session) {
        const TimedMutexLock lock(mutex_.get(), ZelBase::kInfinite);
        session.reset();
        if (lock) {
            --users_;
        }
    }

private:
    // Held while loading, so that the second user finds the agent ready. The kernel's, because a
    // thread that is stuck in loading may be killed.
    const std::unique_ptr<ZelBase::Mutex> mutex_ = ZelBase::Mutex::Create();
    // The users hold the agent, so that nothing is unloaded while this library is: what a killed
    // user held stays.
    int users_ ZELBASE_GUARDED_BY(mutex_) = 0;
    std::weak_ptr<SnmpSession> session_ ZELBASE_GUARDED_BY(mutex_);
};

SharedAgent& Shared() {
    static SharedAgent shared;
    return shared;
}

} // namespace

std::unique_ptr<SnmpQuery> SnmpQuery::Create(const IpAddress& agent) {
    auto query = std::make_unique<WIN32_SnmpQuery>(agent);
    return query->IsValid() ? std::move(query) : nullptr;
}

WIN32_SnmpQuery::WIN32_SnmpQuery(const IpAddress& agent)
    : logger_(CreateLogger("WIN32_SnmpQuery")), agent_(agent), usesShared_(true),
      session_(Shared().AddUser()) {}

WIN32_SnmpQuery::WIN32_SnmpQuery(const IpAddress& agent, std::shared_ptr<SnmpSession> session)
    : logger_(CreateLogger("WIN32_SnmpQuery")), agent_(agent), usesShared_(false),
      session_(std::move(session)) {}

WIN32_SnmpQuery::~WIN32_SnmpQuery() {
    if (usesShared_) {
        Shared().RemoveUser(session_);
    }
}

bool WIN32_SnmpQuery::MayAsk(const Oid& oid) const {
    static const Oid internet(kInternet);
    const bool may =
        session_ && agent_ == LoopbackAddress() && oid.IsValid() && oid.IsUnder(internet);
    if (!may) {
        logger_->Log("MayAsk", LogLevel::kWarning, "Refused to ask %s for \"%s\", agent = %s",
                     agent_.GetText().c_str(), oid.GetText().c_str(),
                     session_ ? "Ok" : "Unavailable");
    }
    return may;
}

template <typename Value>
bool WIN32_SnmpQuery::Get(const char* function, const Oid& oid,
                          std::optional<Value> (VarBind::*read)() const, Value& value) const {
    if (!MayAsk(oid)) {
        return false;
    }
    const auto answer = session_->Ask(SnmpSession::Request::kGet, oid);
    if (!answer) {
        logger_->Log(function, LogLevel::kWarning, "No answer for \"%s\"", oid.GetText().c_str());
        return false;
    }
    const auto found = ((*answer).*read)();
    if (!found) {
        logger_->Log(function, LogLevel::kWarning, "\"%s\" is of another type, type = 0x%02X",
                     oid.GetText().c_str(), static_cast<unsigned>(answer->type));
        return false;
    }
    value = *found;
    return true;
}

bool WIN32_SnmpQuery::GetIpAddress(const Oid& oid, IpAddress& address) {
    return Get("GetIpAddress", oid, &VarBind::Address, address);
}

bool WIN32_SnmpQuery::GetInteger(const Oid& oid, std::int32_t& value) {
    return Get("GetInteger", oid, &VarBind::Integer, value);
}

bool WIN32_SnmpQuery::Walk(const Oid& oid, const Collector& collector) {
    if (!MayAsk(oid)) {
        return false;
    }
    const bool complete = WalkOn(oid, collector);
    if (!complete) {
        logger_->Log("Walk", LogLevel::kWarning, "The walk of \"%s\" was cut short",
                     oid.GetText().c_str());
    }
    return complete;
}

bool WIN32_SnmpQuery::WalkOn(const Oid& root, const Collector& collector) const {
    // A table has no value of its own, so that it gives none here is no failure.
    if (const auto exact = session_->Ask(SnmpSession::Request::kGet, root);
        exact && exact->oid == root) {
        collector(*exact);
    }
    Oid last = root;
    for (int rows = 0; rows < kMostRows; ++rows) {
        auto row = session_->Ask(SnmpSession::Request::kGetNext, last);
        if (!row || row->oid <= last) {
            return false;
        }
        if (!row->oid.IsUnder(root)) {
            return true;
        }
        collector(*row);
        last = std::move(row->oid);
    }
    return false;
}

} // namespace ZelNet
