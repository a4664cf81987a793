#pragma once

// The names of this computer on the network and the servers that it asks for the names of others:
// what the running network says. A name that it does not have, and the servers when it cannot be
// asked, are those that were set.

#include "ZelNet/SourceCode/IpHelper.h"
#include "platform/PlatformFamily.h"
#include "platform/adapters/StaticAdapter.h"

#include <string>
#include <vector>

namespace tervane {

struct NetworkIdentity {
    std::wstring hostName;
    std::wstring domainName;
    // Dotted decimal, in the order in which they are asked.
    std::vector<std::wstring> dnsServers;
};

// Name servers that are set for single adapters, those that are enabled and bound to TCP/IP, count
// where none are set for all. Any thread; throws std::bad_alloc.
NetworkIdentity ReadNetworkIdentity(const ZelNet::IpHelper& ipHelper, PlatformFamily family,
                                    const std::vector<StaticAdapter>& adapters);

} // namespace tervane
