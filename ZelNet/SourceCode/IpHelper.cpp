#include "ZelNet/SourceCode/IpHelper.h"

#include "ZelBase/SystemLibrary.h"

namespace ZelNet {

class WIN32_IpHelper final : public IpHelper {
public:
    WIN32_IpHelper();

    bool IsAvailable() const override;
    bool HasLeaseFunctions() const override;
    DWORD GetAdaptersInfo(IP_ADAPTER_INFO* adapters, ULONG* size) const override;
    DWORD GetNetworkParams(FIXED_INFO* parameters, ULONG* size) const override;
    DWORD GetIpForwardTable(MIB_IPFORWARDTABLE* table, ULONG* size, BOOL sorted) const override;
    DWORD GetInterfaceInfo(IP_INTERFACE_INFO* interfaces, ULONG* size) const override;
    DWORD IpReleaseAddress(IP_ADAPTER_INDEX_MAP* adapter) const override;
    DWORD IpRenewAddress(IP_ADAPTER_INDEX_MAP* adapter) const override;

private:
    ZelBase::SystemLibrary library_;
    decltype(&::GetAdaptersInfo) getAdaptersInfo_;
    decltype(&::GetNetworkParams) getNetworkParams_;
    decltype(&::GetIpForwardTable) getIpForwardTable_;
    decltype(&::GetInterfaceInfo) getInterfaceInfo_;
    decltype(&::IpReleaseAddress) ipReleaseAddress_;
    decltype(&::IpRenewAddress) ipRenewAddress_;
};

namespace {

template <typename Function, typename... Arguments>
DWORD CallIfThere(Function function, Arguments... arguments) {
    return function ? function(arguments...) : ERROR_NOT_SUPPORTED;
}

} // namespace

std::shared_ptr<IpHelper> IpHelper::Load() {
    return std::make_shared<WIN32_IpHelper>();
}

WIN32_IpHelper::WIN32_IpHelper() : library_("IPHLPAPI.DLL") {
    library_.Find("GetAdaptersInfo", getAdaptersInfo_);
    library_.Find("GetNetworkParams", getNetworkParams_);
    library_.Find("GetIpForwardTable", getIpForwardTable_);
    library_.Find("GetInterfaceInfo", getInterfaceInfo_);
    library_.Find("IpReleaseAddress", ipReleaseAddress_);
    library_.Find("IpRenewAddress", ipRenewAddress_);
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
