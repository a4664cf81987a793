#include "support/FakeIpHelper.h"

#include <cstring>

namespace tervane::test {
namespace {

template <std::size_t Size>
void Put(char (&place)[Size], const std::string& text) {
    std::memset(place, 0, Size);
    std::memcpy(place, text.data(), std::min(text.size(), Size - 1));
}

} // namespace

DWORD FakeIpHelper::GetAdaptersInfo(IP_ADAPTER_INFO* places, ULONG* size) const {
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

DWORD FakeIpHelper::GetNetworkParams(FIXED_INFO* parameters, ULONG* size) const {
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

DWORD FakeIpHelper::GetInterfaceInfo(IP_INTERFACE_INFO* places, ULONG* size) const {
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

} // namespace tervane::test
