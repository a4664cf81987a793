#pragma once

// Reads this machine's own management information (RFC 1213) without any network traffic, through
// the agent that runs in the process.

#include "ZelNet/SourceCode/snmp/VarBind.h"

#include <functional>
#include <memory>

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

} // namespace ZelNet
