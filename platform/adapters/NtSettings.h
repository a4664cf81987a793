#pragma once

// The TCP/IP settings of adapters of the NT family. NT 4 keeps them with the adapter's service and
// the name servers for the whole machine; Windows 2000 and later keep all of them by the adapter's
// instance identifier.

#include "platform/PlatformFamily.h"
#include "platform/adapters/StaticAdapter.h"
#include "platform/registry/RegistryKey.h"

#include <string>
#include <vector>

namespace tervane {

class NtSettings {
public:
    // Reads what holds for all adapters.
    explicit NtSettings(PlatformFamily family);

    // Fills in the settings of the adapter whose `serviceName` is known.
    void Read(StaticAdapter& adapter) const;

private:
    std::vector<std::wstring> ReadWinsServers(const std::wstring& service) const;

    bool isNt4_;
    RegistryKey parameters_;
    std::wstring domain_;
    long winsState_;
};

} // namespace tervane
