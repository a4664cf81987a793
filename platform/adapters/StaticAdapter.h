#pragma once

// One installed network adapter as the registry configures it, whether or not it is up. What the
// registry does not say, or says in a wrong type, keeps the value given here.

#include "platform/registry/RegistryList.h"

#include <atomic>
#include <string>
#include <vector>

namespace tervane {

struct StaticAdapter {
    std::wstring name;
    std::wstring driver;
    std::wstring adapterType;
    // Unique on this machine and the same from call to call; other objects find the adapter by it.
    std::wstring cookie;
    std::wstring serviceName;
    // Where its own TCP/IP settings lie below HKEY_LOCAL_MACHINE; empty when it has none.
    std::wstring settingsKey;
    // Six two-digit hexadecimal bytes joined by "-".
    std::wstring hardwareAddress = L"00-00-00-00-00-00";
    // Dotted decimal.
    std::wstring ipAddress = kNoAddress;
    std::wstring subnetMask = kNoAddress;
    std::wstring defaultGateway = kNoAddress;
    std::wstring domainName;
    std::vector<std::wstring> nameServers;
    std::vector<std::wstring> winsServers;
    long winsState = 0;
    bool usingDhcp = false;
    bool boundToTcpip = false;
    bool boundIndirectlyOrDirectlyToTcpip = false;
    bool isEnabled = false;
    bool isFunctional = false;
    bool isDnsStatic = false;
    // By what it is called.
    bool isEthernet = false;
    // By the interface type that its driver was installed with; Windows Vista and later.
    bool hasEthernetType = false;
    bool isPpp = false;
};

// For whoever lists adapters and need not be stopped.
inline const std::atomic<bool> kNeverStop = false;

// Every installed adapter, in the registry's order; once `stop` is set, those that were found until
// then. May be called on any thread; an adapter that vanishes meanwhile is left out or keeps what
// was read of it. Throws std::bad_alloc only.
std::vector<StaticAdapter> ListStaticAdapters(const std::atomic<bool>& stop = kNeverStop);

} // namespace tervane
