#include "ZelNet/SourceCode/WIN32_IpHelper.h"

#include "ZelNet/SourceCode/EntryPoint.h"

namespace ZelNet {
namespace {

template <typename Function, typename... Arguments>
DWORD CallIfThere(Function function, Arguments... arguments) {
    return function ? function(arguments...) : ERROR_NOT_SUPPORTED;
}

} // namespace

std::shared_ptr<IpHelper> IpHelper::Load() {
    return std::make_shared<WIN32_IpHelper>();
}

WIN32_IpHelper::WIN32_IpHelper() : library_(LoadLibraryA("IPHLPAPI.DLL")) {
    FindEntryPoint(library_, "GetAdaptersInfo", getAdaptersInfo_);
    FindEntryPoint(library_, "GetNetworkParams", getNetworkParams_);
    FindEntryPoint(library_, "GetIpForwardTable", getIpForwardTable_);
    FindEntryPoint(library_, "GetInterfaceInfo", getInterfaceInfo_);
    FindEntryPoint(library_, "IpReleaseAddress", ipReleaseAddress_);
    FindEntryPoint(library_, "IpRenewAddress", ipRenewAddress_);
}

bool WIN32_IpHelper::IsAvailable() const {
    return static_cast<bool>(library_);
}

bool WIN32_IpHelper::HasLeaseFunctions() const {
    return getInterfaceInfo_ && ipReleaseAddress_ && ipRenewAddress_;
}

DWORD WIN32_IpHelper::GetAdaptersInfo(IP_ADAPTER_INFO* adapters, ULONG* size) const {
    return CallIfThere(getAdaptersInfo_, adapters, size);
}

DWORD WIN32_IpHelper::GetNetworkParams(FIXED_INFO* parameters, ULONG* size) const {
    return CallIfThere(getNetworkParams_, parameters, size);
}

DWORD WIN32_IpHelper::GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL sorted) const {
    return CallIfThere(getIpForwardTable_, table, size, sorted);
}

DWORD WIN32_IpHelper::GetInterfaceInfo(IP_INTERFACE_INFO* interfaces, ULONG* size) const {
    return CallIfThere(getInterfaceInfo_, interfaces, size);
}

DWORD WIN32_IpHelper::IpReleaseAddress(IP_ADAPTER_INDEX_MAP* adapter) const {
    return CallIfThere(ipReleaseAddress_, adapter);
}

DWORD WIN32_IpHelper::IpRenewAddress(IP_ADAPTER_INDEX_MAP* adapter) const {
    return CallIfThere(ipRenewAddress_, adapter);
}

} // namespace ZelNet
