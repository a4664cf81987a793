#pragma once

#include "ZelBase/log/Logger.h"
#include "ZelNet/SourceCode/snmp/SnmpQuery.h"
#include "ZelNet/SourceCode/snmp/SnmpSession.h"

namespace ZelNet {

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
