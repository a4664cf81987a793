#pragma once

// Reads this machine's own management information (RFC 1213) without any network traffic, through
// the agent that runs in the process.

#include "ZelBase/log/Logger.h"
#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/snmp/Oid.h"
#include "ZelNet/SourceCode/snmp/SnmpSession.h"

#include <functional>
#include <memory>
#include <optional>

namespace ZelNet {

class SnmpQuery {
public:
    // Called once per variable of a walk, in the order of their names.
    using Collector = std::function<void(const VarBind& row)>;

    // Asks the agent at that address; only "127.0.0.1" has one. Null when there is no memory. On a
    // system without an agent every query fails. Keep none for long: an agent may know its tables
    // as they were when the first of the queries that exist was made.
    static std::unique_ptr<SnmpQuery> Create(const IpAddress& agent = LoopbackAddress());

    virtual ~SnmpQuery() = default;

    // The value of one variable. False, and nothing stored, when there is no answer or one of
    // another type. Here as below, names that do not begin with "1.3.6.1" are refused.
    virtual bool GetIpAddress(const Oid& oid, IpAddress& address) = 0;
    virtual bool GetInteger(const Oid& oid, std::int32_t& value) = 0;

    // The variable `oid`, if there is one of that very name, and all below it. True when the walk
    // has left them behind; false when a request failed or the agent does not come forward, after
    // what was collected until then. Exceptions of the collector pass.
    virtual bool Walk(const Oid& oid, const Collector& collector) = 0;

protected:
    SnmpQuery() = default;
    SnmpQuery(const SnmpQuery&) = delete;
    SnmpQuery& operator=(const SnmpQuery&) = delete;
};

// All objects share the system's agent: the first loads it, the last to go unloads it. Each object
// is used by one thread at a time.
class WIN32_SnmpQuery final : public SnmpQuery {
public:
    // More rows than any machine's tables have: an agent that gives more has lost its way.
    static constexpr int kMostRows = 100000;

    explicit WIN32_SnmpQuery(const IpAddress& agent);
    // With an agent of its own; none, when `session` is null.
    WIN32_SnmpQuery(const IpAddress& agent, std::shared_ptr<SnmpSession> session);
    ~WIN32_SnmpQuery() override;

    bool IsValid() const { return static_cast<bool>(logger_); }
    bool GetIpAddress(const Oid& oid, IpAddress& address) override;
    bool GetInteger(const Oid& oid, std::int32_t& value) override;
    bool Walk(const Oid& oid, const Collector& collector) override;

private:
    bool MayAsk(const Oid& oid) const;
    bool WalkOn(const Oid& root, const Collector& collector) const;
    // The value of one variable, as `read` reads it; `function` is named when there is none.
    template <typename Value>
    bool Get(const char* function, const Oid& oid, std::optional<Value> (VarBind::*read)() const,
             Value& value) const;

    const std::unique_ptr<ZelBase::Logger> logger_;
    const IpAddress agent_;
    const bool usesShared_;
    std::shared_ptr<SnmpSession> session_;
};

} // namespace ZelNet
