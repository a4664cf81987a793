#pragma once

#include "ZelNet/SourceCode/snmp/SnmpQuery.h"
#include "platform/adapters/LiveInterface.h"
#include "platform/adapters/StaticAdapter.h"

#include <optional>
#include <vector>

namespace tervane {

// The live interfaces as the MIB-II tables (RFC 1213) tell them, in the order of the interface
// table and without the loopback, so that they are those of the IP Helper library. The tables know
// neither its names nor leases. What they lack of an interface keeps its default; nothing when the
// interfaces themselves cannot be read.
//
// Of several addresses of an interface the lowest counts, because nothing tells the first; of
// several default routes the agent shows but one.
//
// Once `stop` is set, no further interface's own variables are asked for.
std::optional<std::vector<LiveInterface>>
InterfacesByMib(ZelNet::SnmpQuery& query, const std::atomic<bool>& stop = kNeverStop);

} // namespace tervane
