#include "platform/adapters/LiveAdapterSources.h"

#include "platform/adapters/AdapterClassification.h"
#include "platform/adapters/HardwareAddress.h"
#include "platform/adapters/LiveInterface.h"
#include "platform/adapters/MibInterfaces.h"
#include "platform/registry/RegistryKey.h"
#include "platform/text/LetterCase.h"

#include <unordered_map>

namespace tervane {
namespace {

// By what an adapter is known: its cookie, or its address, perhaps with its name. The texts are
// another's, and compared without regard to case.
struct AdapterKey {
    std::wstring_view text;
    std::wstring_view name;

    bool operator==(const AdapterKey& other) const {
        return EqualsIgnoringAsciiCase(text, other.text) &&
               EqualsIgnoringAsciiCase(name, other.name);
    }
};

struct AdapterKeyHash {
    // FNV-1a.
    std::size_t operator()(const AdapterKey& key) const {
        std::uint32_t hash = 2166136261u;
        for (const std::wstring_view text : {key.text, key.name}) {
            for (const wchar_t letter : text) {
                hash = (hash ^ LowerAscii(letter)) * 16777619u;
            }
        }
        return hash;
    }
};

// The installed adapters by everything that a live one may know of them.
class InstalledAdapters {
public:
    explicit InstalledAdapters(std::vector<StaticAdapter> adapters)
        : adapters_(std::move(adapters)) {
        for (Index* index : {&byCookie_, &byDevice_, &byAddress_}) {
            index->reserve(adapters_.size());
        }
        for (const StaticAdapter& adapter : adapters_) {
            byCookie_.try_emplace({adapter.cookie, {}}, &adapter);
            byDevice_.try_emplace({adapter.hardwareAddress, adapter.name}, &adapter);
            byAddress_.try_emplace({adapter.hardwareAddress, {}}, &adapter);
        }
    }
    InstalledAdapters(const InstalledAdapters&) = delete;
    InstalledAdapters& operator=(const InstalledAdapters&) = delete;

    // Null when none is the same device.
    const StaticAdapter* Find(const LiveAdapter& live) const {
        if (const auto* found = FindIn(byCookie_, {live.interfaceName, {}})) {
            return found;
        }
        if (live.hardwareAddress == kNoHardwareAddress) {
            return nullptr;
        }
        // Virtual adapters share the address of the card that they sit on.
        const auto* found = FindIn(byDevice_, {live.hardwareAddress, live.name});
        return found ? found : FindIn(byAddress_, {live.hardwareAddress, {}});
    }

private:
    using Index = std::unordered_map<AdapterKey, const StaticAdapter*, AdapterKeyHash>;

    static const StaticAdapter* FindIn(const Index& index, const AdapterKey& key) {
        const auto found = index.find(key);
        return key.text.empty() || found == index.end() ? nullptr : found->second;
    }

    const std::vector<StaticAdapter> adapters_;
    Index byCookie_;
    Index byDevice_;
    Index byAddress_;
};

std::optional<std::vector<LiveInterface>> Interfaces(const LiveAdapterSources& sources,
                                                     const std::atomic<bool>& stop) {
    if (auto interfaces = InterfacesByIpHelper(*sources.ipHelper)) {
        return interfaces;
    }
    const auto query = sources.managementInformation();
    return query ? InterfacesByMib(*query, stop) : std::nullopt;
}

void Classify(LiveInterface& live) {
    LiveAdapter& adapter = live.adapter;
    adapter.hasEthernetType = IsEthernetType(live.type);
    adapter.isEthernet =
        adapter.hasEthernetType && !IsNonEthernetAdapter(adapter.hardwareAddress, adapter.name);
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
        adapter.interfaceName = installed ? installed->cookie : DecimalText(live.index);
    }
}

} // namespace

std::optional<std::vector<LiveAdapter>> ListLiveAdapters(const LiveAdapterSources& sources,
                                                         const std::atomic<bool>& stop) {
    auto interfaces = Interfaces(sources, stop);
    if (!interfaces) {
        return std::nullopt;
    }
    const InstalledAdapters installed(sources.installed());
    std::vector<LiveAdapter> adapters;
    adapters.reserve(interfaces->size());
    for (LiveInterface& live : *interfaces) {
        if (stop) {
            return std::nullopt;
        }
        Classify(live);
        Complete(live, installed.Find(live.adapter), sources);
        adapters.push_back(std::move(live.adapter));
    }
    return adapters;
}

} // namespace tervane

// The live adapters of this machine.
namespace tervane {
namespace {

// Where the DHCP client notes whom it has its lease from: Windows 2000 and later, Windows NT 4.
std::wstring LeaseServerInRegistry(const StaticAdapter& adapter) {
    const std::wstring services = L"System\\CurrentControlSet\\Services\\";
    for (const std::wstring& path : {services + L"Tcpip\\Parameters\\Interfaces\\" + adapter.cookie,
                                     services + adapter.serviceName + L"\\Parameters\\Tcpip"}) {
        const auto key = RegistryKey::Open(RegistryHive::kLocalMachine, path);
        if (const auto server = key.ReadText(L"DhcpServer")) {
            return *server;
        }
    }
    return {};
}

} // namespace

LiveAdapterSources LiveAdapterSources::System() {
    return {ZelNet::IpHelper::Load(), [] { return ZelNet::SnmpQuery::Create(); },
            [] { return ListStaticAdapters(); }, &LeaseServerInRegistry};
}

std::optional<std::vector<LiveAdapter>> ListLiveAdapters() {
    return ListLiveAdapters(LiveAdapterSources::System());
}

} // namespace tervane
