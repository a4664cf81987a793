#pragma once

// One network interface as the running TCP/IP stack sees it now.

#include "platform/registry/RegistryList.h"

#include <optional>
#include <string>
#include <vector>

namespace tervane {

struct LiveAdapter {
    // The interface's description.
    std::wstring name;
    // By which the system's interface list, and a later list of live adapters, find it again.
    std::wstring interfaceName;
    // The one of the static adapter of the same device; empty when there is none.
    std::wstring cookie;
    std::wstring serviceName;
    // Six two-digit hexadecimal bytes joined by "-".
    std::wstring hardwareAddress = L"00-00-00-00-00-00";
    // Dotted decimal.
    std::wstring ipAddress = kNoAddress;
    std::wstring subnetMask = kNoAddress;
    std::wstring defaultGateway = kNoAddress;
    std::wstring dhcpServer = kNoAddress;
    bool isDhcp = false;
    // By its interface type alone.
    bool hasEthernetType = false;
    bool isEthernet = false;
    bool isPpp = false;
};

// Every live interface, in the system's order; nothing when the stack could not be asked. May be
// called on any thread. Throws std::bad_alloc only.
std::optional<std::vector<LiveAdapter>> ListLiveAdapters();

} // namespace tervane
