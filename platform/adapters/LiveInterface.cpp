#include "platform/adapters/LiveInterface.h"

#include "platform/adapters/HardwareAddress.h"
#include "platform/text/NarrowText.h"

#include <algorithm>

namespace tervane {

std::wstring HardwareAddressText(std::string_view bytes) {
    if (bytes.size() != HardwareAddressBytes().size()) {
        return kNoHardwareAddress;
    }
    return FormatHardwareAddress(
        {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()});
}

namespace {

using ZelNet::TextIn;

// Leaves the value alone where the library says nothing.
template <std::size_t Size>
void Take(const char (&place)[Size], std::wstring& value) {
    if (place[0] != '\0') {
        value = FromNarrow(TextIn(place));
    }
}

LiveInterface Read(const IP_ADAPTER_INFO& info) {
    LiveInterface read;
    LiveAdapter& adapter = read.adapter;
    adapter.name = FromNarrow(TextIn(info.Description));
    adapter.interfaceName = FromNarrow(TextIn(info.AdapterName));
    const auto length = std::min<std::size_t>(info.AddressLength, sizeof info.Address);
    adapter.hardwareAddress =
        HardwareAddressText({reinterpret_cast<const char*>(info.Address), length});
    // Further addresses and gateways hang on these.
    Take(info.IpAddressList.IpAddress.String, adapter.ipAddress);
    Take(info.IpAddressList.IpMask.String, adapter.subnetMask);
    Take(info.GatewayList.IpAddress.String, adapter.defaultGateway);
    Take(info.DhcpServer.IpAddress.String, adapter.dhcpServer);
    adapter.isDhcp = info.DhcpEnabled != 0;
    read.type = static_cast<InterfaceType>(info.Type);
    read.index = info.Index;
    read.knowsLease = true;
    return read;
}

} // namespace

std::optional<std::vector<LiveInterface>> InterfacesByIpHelper(const ZelNet::IpHelper& ipHelper) {
    const ZelNet::IpHelperTable<IP_ADAPTER_INFO> table(
        [&](IP_ADAPTER_INFO* first, ULONG* size) { return ipHelper.GetAdaptersInfo(first, size); });
    std::vector<LiveInterface> interfaces;
    if (table.Result() == ERROR_NO_DATA) { // no interface is there
        return interfaces;
    }
    if (!table.Get()) {
        return std::nullopt;
    }
    for (const IP_ADAPTER_INFO* info = table.Get(); info; info = info->Next) {
        interfaces.push_back(Read(*info));
    }
    return interfaces;
}

} // namespace tervane
