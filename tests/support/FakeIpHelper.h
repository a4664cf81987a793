#pragma once

// An IP Helper library whose adapters are the test's.

#include "ZelNet/SourceCode/IpHelper.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tervane::test {

struct FakeAdapter {
    std::string id = ""; // "{GUID}"
    std::string description = "";
    UINT type = MIB_IF_TYPE_ETHERNET;
    std::string hardware = ""; // its bytes
    std::string address = "0.0.0.0";
    std::string mask = "0.0.0.0";
    std::string gateway = "0.0.0.0";
    bool dhcp = false;
    std::string server = "";
    DWORD index = 0;
};

class FakeIpHelper : public ZelNet::IpHelper {
public:
    std::vector<FakeAdapter> adapters;
    // What GetAdaptersInfo and GetInterfaceInfo return instead of their lists, unless 0.
    DWORD adaptersError = NO_ERROR;
    DWORD interfacesError = NO_ERROR;
    bool hasLeaseFunctions = true;
    // Those of a workstation in the domain "example"; none: the library tells no parameters.
    std::optional<std::vector<std::string>> nameServers;
    // Called with the index of the adapter.
    std::function<void(DWORD)> onRelease;
    std::function<void(DWORD)> onRenew;

    bool IsAvailable() const override { return adaptersError != ERROR_NOT_SUPPORTED; }
    bool HasLeaseFunctions() const override { return hasLeaseFunctions; }
    DWORD GetAdaptersInfo(IP_ADAPTER_INFO* places, ULONG* size) const override;
    DWORD GetNetworkParams(FIXED_INFO* parameters, ULONG* size) const override;
    DWORD GetIpForwardTable(MIB_IPFORWARDTABLE*, ULONG*, BOOL) const override {
        return ERROR_NOT_SUPPORTED;
    }
    DWORD GetInterfaceInfo(IP_INTERFACE_INFO* places, ULONG* size) const override;
    DWORD IpReleaseAddress(IP_ADAPTER_INDEX_MAP* adapter) const override {
        onRelease(adapter->Index);
        return ERROR_GEN_FAILURE; // nobody looks
    }
    DWORD IpRenewAddress(IP_ADAPTER_INDEX_MAP* adapter) const override {
        onRenew(adapter->Index);
        return ERROR_GEN_FAILURE;
    }
};

} // namespace tervane::test
