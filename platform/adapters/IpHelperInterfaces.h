#pragma once

#include "ZelNet/SourceCode/IpHelper.h"
#include "platform/adapters/LiveInterface.h"

#include <optional>
#include <vector>

namespace tervane {

// The live interfaces as the IP Helper library lists them, in its order; it leaves the loopback
// out. Nothing when the library is missing or fails.
std::optional<std::vector<LiveInterface>> InterfacesByIpHelper(const ZelNet::IpHelper& ipHelper);

} // namespace tervane
