#pragma once

// An IP Helper library whose adapters are the test's.

#include "ZelNet/SourceCode/IpHelper.h"

#include <algorithm>
#include <cstring>
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
    DWORD GetAdaptersInfo(IP_ADAPTER_INFO* places, ULONG* size) const override {
        if (adaptersError != NO_ERROR) {
            return adaptersError;
        }
        if (adapters.empty()) {
            return ERROR_NO_DATA;
        }
        const auto needed = static_cast<ULONG>(adapters.size() * sizeof *places);
        if (*size < needed) {
            *size = needed;
            return ERROR_BUFFER_OVERFLOW;
        }
        IP_ADAPTER_INFO* place = places;
        for (const FakeAdapter& adapter : adapters) {
            *place = {};
            place->Next = place + 1;
            Put(place->AdapterName, adapter.id);
            Put(place->Description, adapter.description);
            place->AddressLength = static_cast<UINT>(adapter.hardware.size());
            std::memcpy(place->Address, adapter.hardware.data(),
                        std::min(adapter.hardware.size(), sizeof place->Address));
            place->Index = adapter.index;
            place->Type = adapter.type;
            place->DhcpEnabled = adapter.dhcp;
            Put(place->IpAddressList.IpAddress.String, adapter.address);
            Put(place->IpAddressList.IpMask.String, adapter.mask);
            Put(place->GatewayList.IpAddress.String, adapter.gateway);
            Put(place->DhcpServer.IpAddress.String, adapter.server);
            ++place;
        }
        places[adapters.size() - 1].Next = nullptr;
        return NO_ERROR;
    }
    DWORD GetNetworkParams(FIXED_INFO* parameters, ULONG* size) const override {
        if (!nameServers) {
            return ERROR_NOT_SUPPORTED;
        }
        // More than fits at first.
        const auto needed = static_cast<ULONG>(sizeof *parameters + 5000 +
                                               nameServers->size() * sizeof(IP_ADDR_STRING));
        if (*size < needed) {
            *size = needed;
            return ERROR_BUFFER_OVERFLOW;
        }
        *parameters = {};
        Put(parameters->HostName, "workstation");
        Put(parameters->DomainName, "example");
        auto* next = reinterpret_cast<IP_ADDR_STRING*>(parameters + 1);
        IP_ADDR_STRING* entry = nullptr;
        for (const std::string& server : *nameServers) {
            entry = entry ? entry->Next = next++ : &parameters->DnsServerList;
            *entry = {};
            Put(entry->IpAddress.String, server);
        }
        return NO_ERROR;
    }
    DWORD GetIpForwardTable(MIB_IPFORWARDTABLE*, ULONG*, BOOL) const override {
        return ERROR_NOT_SUPPORTED;
    }
    DWORD GetInterfaceInfo(IP_INTERFACE_INFO* places, ULONG* size) const override {
        if (interfacesError != NO_ERROR) {
            return interfacesError;
        }
        const auto needed =
            static_cast<ULONG>(sizeof *places + adapters.size() * sizeof places->Adapter[0]);
        if (*size < needed) {
            *size = needed;
            return ERROR_INSUFFICIENT_BUFFER;
        }
        places->NumAdapters = static_cast<LONG>(adapters.size());
        for (std::size_t i = 0; i < adapters.size(); ++i) {
            IP_ADAPTER_INDEX_MAP& place = places->Adapter[i];
            place.Index = adapters[i].index;
            const std::string name = "\\DEVICE\\TCPIP_" + adapters[i].id;
            std::copy(name.c_str(), name.c_str() + name.size() + 1, place.Name);
        }
        return NO_ERROR;
    }
    DWORD IpReleaseAddress(IP_ADAPTER_INDEX_MAP* adapter) const override {
        onRelease(adapter->Index);
        return ERROR_GEN_FAILURE; // nobody looks
    }
    DWORD IpRenewAddress(IP_ADAPTER_INDEX_MAP* adapter) const override {
        onRenew(adapter->Index);
        return ERROR_GEN_FAILURE;
    }

private:
    template <std::size_t Size>
    static void Put(char (&place)[Size], const std::string& text) {
        std::memset(place, 0, Size);
        std::memcpy(place, text.data(), std::min(text.size(), Size - 1));
    }
};

} // namespace tervane::test
