#pragma once

// What a source of live interfaces knows of one: the adapter as far as the running stack describes
// it, before it is matched with the installed adapters and judged.

#include "ZelNet/SourceCode/IpHelper.h"
#include "platform/adapters/AdapterClassification.h"
#include "platform/adapters/LiveAdapter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tervane {

struct LiveInterface {
    // Name, addresses and, where the source knows them, interface name and lease.
    LiveAdapter adapter;
    InterfaceType type{};
    // The stack's number for it.
    std::uint32_t index = 0;
    // Whether the source knows of leases at all.
    bool knowsLease = false;
};

// Six bytes in their text form; for any other number of bytes, that of no address.
std::wstring HardwareAddressText(std::string_view bytes);

// The live interfaces as the IP Helper library lists them, in its order; it leaves the loopback
// out. Nothing when the library is missing or fails.
std::optional<std::vector<LiveInterface>> InterfacesByIpHelper(const ZelNet::IpHelper& ipHelper);

} // namespace tervane
