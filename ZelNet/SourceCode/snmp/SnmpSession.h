#pragma once

// An agent that has been started, and the questions to it. Any number of users may share one; an
// extension agent is made for one caller at a time, so their questions take turns.
//
// A thread that is stuck in the agent may be killed there, with the turn in hand. So the lock is
// the kernel's, which the next in turn then has; any other would stay locked for all.

#include "ZelBase/threads/Mutex.h"
#include "ZelNet/SourceCode/IpAddress.h"
#include "ZelNet/SourceCode/snmp/Oid.h"
#include "ZelNet/SourceCode/snmp/SnmpAgent.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ZelNet {

// A variable and its value, as an SNMP agent answers it (RFC 1157, section 4.1.1).
struct VarBind {
    Oid oid;
    // The ASN.1 type of the value.
    std::uint8_t type = ASN_NULL;
    // The value of the numeric types.
    std::int32_t number = 0;
    // The value of the types that are strings of octets; an address has four.
    std::string octets;

    // The value as one of these types; nothing when it is of another.
    std::optional<std::int32_t> Integer() const;
    std::optional<IpAddress> Address() const;
    std::optional<std::string> Octets() const;
};

class SnmpSession {
public:
    enum class Request : BYTE { kGet = SNMP_PDU_GET, kGetNext = SNMP_PDU_GETNEXT };

    // Starts the agent. Null when there is none, it refuses, or memory is exhausted.
    static std::shared_ptr<SnmpSession> Open(std::unique_ptr<SnmpAgent> agent);
    ~SnmpSession();
    SnmpSession(const SnmpSession&) = delete;
    SnmpSession& operator=(const SnmpSession&) = delete;

    // The variable with that name, or the one after it; nothing when the agent has no answer or
    // one that cannot be read. Any thread. Throws std::bad_alloc.
    std::optional<VarBind> Ask(Request request, const Oid& oid);

private:
    explicit SnmpSession(std::unique_ptr<SnmpAgent> agent)
        : agent_(std::move(agent)), turn_(ZelBase::Mutex::Create()) {}

    bool Start();
    SnmpVarBind& Entry() const { return *static_cast<SnmpVarBind*>(entries_); }
    void FreeEntry();

    std::unique_ptr<SnmpAgent> agent_;
    const std::unique_ptr<ZelBase::Mutex> turn_;
    // What every question is put into, in the agent's memory.
    SnmpVarBindList* bindings_ = nullptr;
    void* entries_ = nullptr;
};

} // namespace ZelNet
