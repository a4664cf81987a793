#pragma once

// What the running network calls this computer and whom it asks for names: the network parameters
// of the IP Helper library, as plain values.

#include "ZelNet/SourceCode/IpHelper.h"

#include <optional>
#include <string>
#include <vector>

namespace ZelNet {

struct NetworkParameters {
    // Empty when the network has none.
    std::string hostName;
    std::string domainName;
    // Dotted decimal, in the order in which they are asked; an empty list is what the system says.
    std::vector<std::string> dnsServers;
};

// Nothing when the library is missing or fails. Believes no text to be terminated and no list to
// end: a text is as long as its place at most, and the list is cut after 256 servers. Any thread.
// Throws std::bad_alloc.
std::optional<NetworkParameters> ReadNetworkParameters(const IpHelper& ipHelper);

} // namespace ZelNet
