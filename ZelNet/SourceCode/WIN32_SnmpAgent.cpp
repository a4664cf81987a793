#include "ZelNet/SourceCode/WIN32_SnmpAgent.h"

#include "ZelNet/SourceCode/EntryPoint.h"

namespace ZelNet {

std::unique_ptr<SnmpAgent> SnmpAgent::Load() {
    auto agent = std::make_unique<WIN32_SnmpAgent>();
    return agent->IsComplete() ? std::move(agent) : nullptr;
}

WIN32_SnmpAgent::WIN32_SnmpAgent()
    : api_(LoadLibraryA("SNMPAPI.DLL")), agent_(LoadLibraryA("INETMIB1.DLL")) {
    FindEntryPoint(api_, "SnmpUtilMemAlloc", memAlloc_);
    FindEntryPoint(api_, "SnmpUtilMemFree", memFree_);
    FindEntryPoint(agent_, "SnmpExtensionInit", init_);
    FindEntryPoint(agent_, "SnmpExtensionQuery", query_);
}

} // namespace ZelNet
