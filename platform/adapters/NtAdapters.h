#pragma once

// The installed adapters of the NT family: the cards that the system lists, and on Windows 2000 and
// later also the network devices of the device installation, of which cards are only a part.
// Everything that concerns all adapters is read once, so that each adapter costs the same however
// many there are.

#include "platform/PlatformFamily.h"
#include "platform/adapters/NetworkDevices.h"
#include "platform/adapters/StaticAdapter.h"
#include "platform/registry/RegistryKey.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tervane {

// Which adapters of the NT family TCP/IP is bound to. A component lists below its "Linkage" key the
// devices that it is bound to; a device may belong to an adapter or to another component, such as a
// packet scheduler, that is bound to adapters in turn.
class NtBindings {
public:
    // Reads the bindings of TCP/IP and of whatever lies below it, each component once, so that
    // bindings in a circle end.
    static NtBindings Read();

    // `device` is the last part of a device's name, "{...}" or "El90x1", in any case.
    bool IsBound(std::wstring_view device) const;
    bool IsBoundIndirectlyOrDirectly(std::wstring_view device) const;

private:
    std::unordered_set<std::wstring> direct_;
    std::unordered_set<std::wstring> all_;
};

// The TCP/IP settings of adapters of the NT family. NT 4 keeps them with the adapter's service and
// the name servers for the whole machine; Windows 2000 and later keep all of them by the adapter's
// instance identifier.
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

// Cards first, in the registry's order, then the devices that are none; once `stop` is set, those
// that were found until then. `family` is one of the NT family.
std::vector<StaticAdapter> ListNtAdapters(PlatformFamily family,
                                          const DeviceApi& api = DeviceApi::System(),
                                          const std::atomic<bool>& stop = kNeverStop);

} // namespace tervane
