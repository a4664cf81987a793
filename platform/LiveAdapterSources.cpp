#include "platform/LiveAdapterSources.h"

#include "platform/AdapterClassification.h"
#include "platform/HardwareAddress.h"
#include "platform/IpHelperInterfaces.h"
#include "platform/LetterCase.h"
#include "platform/MibInterfaces.h"

#include <unordered_map>

namespace tervane {
namespace {

// The installed adapters by everything that a live one may know of them.
class InstalledAdapters {
public:
    explicit InstalledAdapters(std::vector<StaticAdapter> adapters)
        : adapters_(std::move(adapters)) {
        for (const StaticAdapter& adapter : adapters_) {
            byCookie_.try_emplace(LowerCase(adapter.cookie), &adapter);
            byDevice_.try_emplace(DeviceKey(adapter.hardwareAddress, adapter.name), &adapter);
            byAddress_.try_emplace(LowerCase(adapter.hardwareAddress), &adapter);
        }
    }
    InstalledAdapters(const InstalledAdapters&) = delete;
    InstalledAdapters& operator=(const InstalledAdapters&) = delete;

    // Null when none is the same device.
    const StaticAdapter* Find(const LiveAdapter& live) const {
        if (const auto* found = FindIn(byCookie_, LowerCase(live.interfaceName))) {
            return found;
        }
        if (live.hardwareAddress == kNoHardwareAddress) {
            return nullptr;
        }
        // Virtual adapters share the address of the card that they sit on.
        const auto* found = FindIn(byDevice_, DeviceKey(live.hardwareAddress, live.name));
        return found ? found : FindIn(byAddress_, LowerCase(live.hardwareAddress));
    }

private:
    using Index = std::unordered_map<std::wstring, const StaticAdapter*>;

    static std::wstring DeviceKey(const std::wstring& address, const std::wstring& name) {
        return LowerCase(address + L" " + name);
    }
    static const StaticAdapter* FindIn(const Index& index, const std::wstring& key) {
        const auto found = index.find(key);
        return key.empty() || found == index.end() ? nullptr : found->second;
    }

    const std::vector<StaticAdapter> adapters_;
    Index byCookie_;
    Index byDevice_;
    Index byAddress_;
};

std::optional<std::vector<LiveInterface>> Interfaces(const LiveAdapterSources& sources) {
    if (auto interfaces = InterfacesByIpHelper(*sources.ipHelper)) {
        return interfaces;
    }
    const auto query = sources.managementInformation();
    return query ? InterfacesByMib(*query) : std::nullopt;
}

void Classify(LiveInterface& live) {
    LiveAdapter& adapter = live.adapter;
    const bool isEthernetType =
        live.type == InterfaceType::kEthernet || live.type == InterfaceType::kWireless;
    adapter.isEthernet =
        isEthernetType && !IsNonEthernetAdapter(adapter.hardwareAddress, adapter.name);
    adapter.isPpp = live.type == InterfaceType::kPpp;
}

void Complete(LiveInterface& live, const StaticAdapter* installed,
              const LiveAdapterSources& sources) {
    LiveAdapter& adapter = live.adapter;
    if (installed) {
        adapter.cookie = installed->cookie;
        adapter.serviceName = installed->serviceName;
        if (!live.knowsLease) {
            adapter.isDhcp = installed->usingDhcp;
            const std::wstring server = sources.leaseServer(*installed);
            adapter.dhcpServer = server.empty() ? adapter.dhcpServer : server;
        }
    }
    if (adapter.interfaceName.empty()) {
        adapter.interfaceName = installed ? installed->cookie : std::to_wstring(live.index);
    }
}

} // namespace

std::optional<std::vector<LiveAdapter>> ListLiveAdapters(const LiveAdapterSources& sources) {
    auto interfaces = Interfaces(sources);
    if (!interfaces) {
        return std::nullopt;
    }
    const InstalledAdapters installed(sources.installed());
    std::vector<LiveAdapter> adapters;
    adapters.reserve(interfaces->size());
    for (LiveInterface& live : *interfaces) {
        Classify(live);
        Complete(live, installed.Find(live.adapter), sources);
        adapters.push_back(std::move(live.adapter));
    }
    return adapters;
}

} // namespace tervane
