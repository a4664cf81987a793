#include "ZelNet/SourceCode/snmp/WIN32_SnmpAgent.h"

namespace ZelNet {

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
