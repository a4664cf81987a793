#include "ZelNet/SourceCode/snmp/SnmpAgent.h"

#include "ZelBase/SystemLibrary.h"

namespace ZelNet {

class WIN32_SnmpAgent final : public SnmpAgent {
public:
    WIN32_SnmpAgent();

    bool IsComplete() const { return memAlloc_ && memFree_ && init_ && query_; }
    void* MemAlloc(UINT bytes) override { return memAlloc_(bytes); }
    void MemFree(void* memory) override { memFree_(memory); }
    bool ExtensionInit(DWORD upTime, HANDLE* trapEvent, AsnObjectIdentifier* view) override {
        return init_(upTime, trapEvent, view) != FALSE;
    }
    bool ExtensionQuery(BYTE request, SnmpVarBindList* bindings, AsnInteger32* errorStatus,
                        AsnInteger32* errorIndex) override {
        return query_(request, bindings, errorStatus, errorIndex) != FALSE;
    }

private:
    // The agent stands on the other library and goes first.
    ZelBase::SystemLibrary api_;
    ZelBase::SystemLibrary agent_;
    decltype(&::SnmpUtilMemAlloc) memAlloc_;
    decltype(&::SnmpUtilMemFree) memFree_;
    decltype(&::SnmpExtensionInit) init_;
    decltype(&::SnmpExtensionQuery) query_;
};

std::unique_ptr<SnmpAgent> SnmpAgent::Load() {
    auto agent = std::make_unique<WIN32_SnmpAgent>();
    return agent->IsComplete() ? std::move(agent) : nullptr;
}

WIN32_SnmpAgent::WIN32_SnmpAgent() : api_("SNMPAPI.DLL"), agent_("INETMIB1.DLL") {
    api_.Find("SnmpUtilMemAlloc", memAlloc_);
    api_.Find("SnmpUtilMemFree", memFree_);
    agent_.Find("SnmpExtensionInit", init_);
    agent_.Find("SnmpExtensionQuery", query_);
}

} // namespace ZelNet
