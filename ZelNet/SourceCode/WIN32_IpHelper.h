#pragma once

#include "ZelBase/SystemLibrary.h"
#include "ZelNet/SourceCode/IpHelper.h"

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

} // namespace ZelNet
