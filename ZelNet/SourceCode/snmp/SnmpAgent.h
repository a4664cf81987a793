#pragma once

// The system's SNMP extension agent for the Internet MIB (RFC 1213), which runs in this process:
// the four functions of "SNMPAPI.DLL" and "INETMIB1.DLL" that a query needs, arguments and results
// as theirs. Systems without SNMP lack them. Tests put agents of their own here.

#include <winsock2.h>

#include <snmp.h>

#include <memory>

namespace ZelNet {

class SnmpAgent {
public:
    // Loads the system's; null when a library or a function is missing.
    static std::unique_ptr<SnmpAgent> Load();

    virtual ~SnmpAgent() = default;
    // The memory in which identifiers and texts travel to the agent and back. Null when exhausted.
    virtual void* MemAlloc(UINT bytes) = 0;
    virtual void MemFree(void* memory) = 0;
    // The event and the view belong to the agent.
    virtual bool ExtensionInit(DWORD upTime, HANDLE* trapEvent, AsnObjectIdentifier* view) = 0;
    // Replaces names and values of the bindings; the former names are freed by the agent. False,
    // or an error status, when there is no answer.
    virtual bool ExtensionQuery(BYTE request, SnmpVarBindList* bindings, AsnInteger32* errorStatus,
                                AsnInteger32* errorIndex) = 0;

protected:
    SnmpAgent() = default;
    SnmpAgent(const SnmpAgent&) = delete;
    SnmpAgent& operator=(const SnmpAgent&) = delete;
};

} // namespace ZelNet
