#pragma once

// Where the facts of live adapters come from, and how they are put together.

#include "ZelNet/SourceCode/IpHelper.h"
#include "ZelNet/SourceCode/snmp/SnmpQuery.h"
#include "platform/adapters/LiveAdapter.h"
#include "platform/adapters/StaticAdapter.h"

#include <functional>

namespace tervane {

struct LiveAdapterSources {
    std::shared_ptr<const ZelNet::IpHelper> ipHelper;
    // Asked only where the IP Helper library is missing or fails. May give null.
    std::function<std::unique_ptr<ZelNet::SnmpQuery>()> managementInformation;
    // The installed adapters.
    std::function<std::vector<StaticAdapter>()> installed;
    // The DHCP server of an installed adapter, for sources that do not know it; empty when there is
    // none.
    std::function<std::wstring(const StaticAdapter& adapter)> leaseServer;

    // This machine's.
    static LiveAdapterSources System();
};

// What ListLiveAdapters lists, from these sources; nothing once `stop` is set. The cost is linear
// in the number of adapters.
//
// An adapter is of the Ethernet class by its interface type, 6 or 71 (wireless), unless its
// hardware address or description is one of those that are not; it is for dial-up by type 23.
// The installed adapter of the same device is found by the interface name, which for the NT family
// is its instance identifier, else by the hardware address.
std::optional<std::vector<LiveAdapter>>
ListLiveAdapters(const LiveAdapterSources& sources, const std::atomic<bool>& stop = kNeverStop);

} // namespace tervane
