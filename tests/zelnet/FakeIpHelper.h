#pragma once

#include "ZelNet/SourceCode/IpHelper.h"

#include <cstring>
#include <string>

namespace ZelNet {

// Network parameters of a computer that the test makes up.
class FakeIpHelper : public IpHelper {
public:
    explicit FakeIpHelper(std::vector<std::string> servers) : servers_(std::move(servers)) {}

    DWORD GetNetworkParams(FIXED_INFO* parameters, ULONG* size) const override {
        const ULONG needed = sizeof(FIXED_INFO) + kPadding +
                             static_cast<ULONG>(servers_.size() * sizeof(IP_ADDR_STRING));
        if (*size < needed) {
            *size = needed;
            return ERROR_BUFFER_OVERFLOW;
        }
        std::strcpy(parameters->HostName, "workstation");
        std::strcpy(parameters->DomainName, "example");
        auto* next = reinterpret_cast<IP_ADDR_STRING*>(parameters + 1);
        IP_ADDR_STRING* entry = &parameters->DnsServerList;
        for (std::size_t index = 0; index < servers_.size(); ++index) {
            entry = index == 0 ? entry : entry->Next = next++;
            std::strcpy(entry->IpAddress.String, servers_[index].c_str());
        }
        return NO_ERROR;
    }
    bool IsAvailable() const override { return true; }
    bool HasLeaseFunctions() const override { return false; }
    DWORD GetAdaptersInfo(IP_ADAPTER_INFO*, ULONG*) const override { return kMissing; }
    DWORD GetIpForwardTable(MIB_IPFORWARDTABLE*, ULONG*, BOOL) const override { return kMissing; }
    DWORD GetInterfaceInfo(IP_INTERFACE_INFO*, ULONG*) const override { return kMissing; }
    DWORD IpReleaseAddress(IP_ADAPTER_INDEX_MAP*) const override { return kMissing; }
    DWORD IpRenewAddress(IP_ADAPTER_INDEX_MAP*) const override { return kMissing; }

private:
    static constexpr DWORD kMissing = ERROR_NOT_SUPPORTED;
    static constexpr ULONG kPadding = 5000; // more than fits at first

    std::vector<std::string> servers_;
};

} // namespace ZelNet
