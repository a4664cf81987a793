#include "platform/adapters/NtAdapters.h"

#include "platform/adapters/AdapterClassification.h"
#include "platform/adapters/DriverAddress.h"
#include "platform/adapters/NetworkDevices.h"
#include "platform/adapters/TcpipKeys.h"
#include "platform/registry/RegistryList.h"
#include "platform/text/LetterCase.h"

#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tervane {
namespace {

// The names of devices in a "Bind" value, without "\Device\" and in lower case.
std::vector<std::wstring> ReadBind(const RegistryKey& linkage) {
    const std::optional<RegistryValue> bind = linkage.ReadSetting(L"Bind");
    std::vector<std::wstring> devices;
    if (auto texts = bind ? bind->Texts() : std::nullopt) {
        devices = std::move(*texts);
    } else if (const auto text = bind ? bind->Text() : std::nullopt) {
        devices = SplitList(*text);
    }
    for (std::wstring& device : devices) {
        device = LowerAscii(std::wstring_view(device).substr(device.find_last_of(L'\\') + 1));
    }
    return devices;
}

// What a component is bound to, without the bindings that are switched off.
std::vector<std::wstring> BindingsOf(const std::wstring& component) {
    const RegistryKey linkage =
        RegistryKey::Open(RegistryHive::kLocalMachine, kServicesKey + component + L"\\Linkage");
    std::vector<std::wstring> devices = ReadBind(linkage);
    const std::vector<std::wstring> list = ReadBind(linkage.OpenSubKey(L"Disabled"));
    const std::unordered_set<std::wstring> disabled(list.begin(), list.end());
    std::erase_if(devices, [&](const std::wstring& device) {
        return device.empty() || disabled.contains(device);
    });
    return devices;
}

} // namespace

NtBindings NtBindings::Read() {
    NtBindings bindings;
    std::vector<std::wstring> pending = BindingsOf(L"Tcpip");
    bindings.direct_.insert(pending.begin(), pending.end());
    while (!pending.empty()) {
        const std::wstring device = std::move(pending.back());
        pending.pop_back();
        if (bindings.all_.insert(device).second) {
            const std::vector<std::wstring> lower = BindingsOf(device);
            pending.insert(pending.end(), lower.begin(), lower.end());
        }
    }
    return bindings;
}

bool NtBindings::IsBound(std::wstring_view device) const {
    return direct_.contains(LowerAscii(device));
}

bool NtBindings::IsBoundIndirectlyOrDirectly(std::wstring_view device) const {
    return all_.contains(LowerAscii(device));
}

namespace {

constexpr wchar_t kNetbtKey[] = L"System\\CurrentControlSet\\Services\\NetBT\\";

RegistryKey OpenMachine(const std::wstring& path) {
    return RegistryKey::Open(RegistryHive::kLocalMachine, path);
}

std::vector<std::wstring> ReadNameServers(const RegistryKey& key) {
    std::vector<std::wstring> servers = ReadList(key, L"NameServer");
    return servers.empty() ? ReadList(key, L"NameServerList") : servers;
}

} // namespace

NtSettings::NtSettings(PlatformFamily family)
    : isNt4_(family == PlatformFamily::kNt4), parameters_(OpenMachine(kTcpipParametersKey)),
      domain_(ReadTextOr(parameters_, L"Domain")),
      winsState_(static_cast<long>(
          ReadSwitch(OpenMachine(std::wstring(kNetbtKey) + L"Parameters"), L"NodeType")
              .value_or(0))) {}

void NtSettings::Read(StaticAdapter& adapter) const {
    RegistryKey settings;
    if (!adapter.serviceName.empty()) {
        adapter.settingsKey =
            isNt4_ ? TcpipServiceKey(adapter.serviceName) : TcpipInterfaceKey(adapter.serviceName);
        adapter.winsServers = ReadWinsServers(adapter.serviceName);
        settings = OpenMachine(adapter.settingsKey);
    }
    adapter.winsState = winsState_;
    adapter.usingDhcp = ReadSwitch(settings, L"EnableDHCP").value_or(0) != 0;
    adapter.ipAddress = ReadFirstAddress(settings, L"IPAddress");
    adapter.subnetMask = ReadFirstAddress(settings, L"SubnetMask");
    adapter.defaultGateway = ReadFirstAddress(settings, L"DefaultGateway");
    adapter.domainName = ReadTextOr(settings, L"Domain", domain_);
    adapter.nameServers = ReadNameServers(isNt4_ ? parameters_ : settings);
    adapter.isDnsStatic = !adapter.nameServers.empty();
}

std::vector<std::wstring> NtSettings::ReadWinsServers(const std::wstring& service) const {
    if (!isNt4_) {
        return ReadList(OpenMachine(kNetbtKey + (L"Parameters\\Interfaces\\Tcpip_" + service)),
                        L"NameServerList");
    }
    const RegistryKey adapter = OpenMachine(kNetbtKey + (L"Adapters\\" + service));
    std::vector<std::wstring> servers = ReadList(adapter, L"NameServer");
    for (std::wstring& backup : ReadList(adapter, L"NameServerBackup")) {
        servers.push_back(std::move(backup));
    }
    return servers;
}

namespace {

constexpr wchar_t kCardsKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
constexpr wchar_t kNetworkClassId[] = L"{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr wchar_t kClassesKey[] = L"System\\CurrentControlSet\\Control\\Class\\";
// Below the current hardware profile.
constexpr wchar_t kProfileDevicesKey[] = L"System\\CurrentControlSet\\Enum\\";

constexpr DWORD kIsDisabled = 1;      // ConfigFlags: everywhere
constexpr DWORD kIsNotWorking = 0x40; // ConfigFlags: its installation failed
// CSConfigFlags, for one hardware profile: disabled, or not there at all.
constexpr DWORD kIsOutOfProfile = 1 | 2;
constexpr DWORD kServiceDisabled = 4; // Start

// What the class key of a network device tells.
struct ClassEntry {
    std::wstring key; // below the class keys
    std::wstring instance;
    std::wstring description;
    std::wstring driver;
    bool hasEthernetType = false;
};

bool IsInProfile(const std::wstring& device) {
    const RegistryKey key =
        RegistryKey::Open(RegistryHive::kCurrentConfig, kProfileDevicesKey + device);
    return (key.ReadNumber(L"CSConfigFlags").value_or(0) & kIsOutOfProfile) == 0;
}

// Standardised for drivers of NDIS 6.
bool HasEthernetType(const RegistryKey& key) {
    return IsEthernetType(static_cast<InterfaceType>(ReadSwitch(key, L"*IfType").value_or(0)));
}

std::vector<ClassEntry> ReadClassEntries() {
    std::vector<ClassEntry> entries;
    const RegistryKey network = OpenMachine(std::wstring(kClassesKey) + kNetworkClassId);
    for (const std::wstring& name : network.SubKeyNames()) {
        if (name.find_first_not_of(L"0123456789") != std::wstring::npos) {
            continue; // "Properties"
        }
        const RegistryKey key = network.OpenSubKey(name);
        entries.push_back({std::wstring(kNetworkClassId) + L"\\" + name,
                           ReadTextOr(key, L"NetCfgInstanceId"), ReadTextOr(key, L"DriverDesc"),
                           ReadTextOr(key, L"Driver"), HasEthernetType(key)});
    }
    return entries;
}

class NtAdapterReader {
public:
    NtAdapterReader(PlatformFamily family, const DeviceApi& api, const std::atomic<bool>& stop)
        : isNt4_(family == PlatformFamily::kNt4), api_(api), stop_(stop), settings_(family) {}

    std::vector<StaticAdapter> ReadAll() {
        if (!isNt4_) {
            devices_ = NetworkDevices::Read(api_);
            entries_ = ReadClassEntries();
        }
        for (const ClassEntry& entry : entries_) {
            byInstance_.try_emplace(LowerAscii(entry.instance), &entry);
        }
        AddCards();
        for (const ClassEntry& entry : entries_) {
            AddDevice(entry);
        }
        return std::move(adapters_);
    }

private:
    void AddCards() {
        const RegistryKey cards = OpenMachine(kCardsKey);
        for (const std::wstring& name : cards.SubKeyNames()) {
            const RegistryKey card = cards.OpenSubKey(name);
            StaticAdapter adapter;
            adapter.serviceName = ReadTextOr(card, L"ServiceName");
            adapter.cookie =
                adapter.serviceName.empty() ? L"NetworkCards\\" + name : adapter.serviceName;
            adapter.name = ReadTextOr(card, L"Description");
            adapter.name = adapter.name.empty() ? ReadTextOr(card, L"Title") : adapter.name;
            const auto entry = byInstance_.find(LowerAscii(adapter.serviceName));
            const bool isKnown = !adapter.serviceName.empty() && entry != byInstance_.end();
            Add(std::move(adapter), isKnown ? entry->second : nullptr);
        }
    }

    void AddDevice(const ClassEntry& entry) {
        StaticAdapter adapter;
        adapter.serviceName = entry.instance;
        adapter.cookie = entry.instance.empty() ? entry.key : entry.instance;
        Add(std::move(adapter), &entry);
    }

    // Fills in the rest; an adapter that is listed already is left as it is.
    void Add(StaticAdapter adapter, const ClassEntry* entry) {
        if (stop_ || !listed_.insert(LowerAscii(adapter.cookie)).second) {
            return;
        }
        if (isNt4_) {
            ReadService(adapter);
        } else {
            ReadDevice(adapter, entry);
        }
        Classify(adapter);
        settings_.Read(adapter);
        if (auto address = addresses_.Read(adapter.serviceName)) {
            adapter.hardwareAddress = std::move(*address);
        }
        adapter.boundToTcpip = bindings_.IsBound(adapter.serviceName);
        adapter.boundIndirectlyOrDirectlyToTcpip =
            bindings_.IsBoundIndirectlyOrDirectly(adapter.serviceName);
        adapters_.push_back(std::move(adapter));
    }

    // Windows 2000 and later. A device that the installation does not know cannot be blamed.
    void ReadDevice(StaticAdapter& adapter, const ClassEntry* entry) const {
        const NetworkDevice* device = entry == nullptr ? nullptr : devices_.Find(entry->key);
        adapter.isEnabled = true;
        adapter.isFunctional = true;
        if (entry != nullptr) {
            adapter.name = adapter.name.empty() ? entry->description : adapter.name;
            adapter.driver = entry->driver;
            adapter.hasEthernetType = entry->hasEthernetType;
        }
        if (device != nullptr) {
            adapter.name = device->description.empty() ? adapter.name : device->description;
            adapter.driver = device->service.empty() ? adapter.driver : device->service;
            const auto& state = device->state;
            adapter.isEnabled = (device->configFlags & kIsDisabled) == 0 &&
                                !(state && state->isDisabled) && IsInProfile(device->instance);
            // The registry only tells what happened when the device was installed.
            adapter.isFunctional =
                state ? state->works
                      : device->isPresent && (device->configFlags & kIsNotWorking) == 0;
        }
        adapter.driver = adapter.driver.empty() ? adapter.serviceName : adapter.driver;
    }

    // NT 4, which keeps a device of its own for every service.
    static void ReadService(StaticAdapter& adapter) {
        adapter.driver = adapter.serviceName;
        const std::wstring device = L"Root\\LEGACY_" + adapter.serviceName + L"\\0000";
        const DWORD start =
            OpenMachine(kServicesKey + adapter.serviceName).ReadNumber(L"Start").value_or(0);
        const DWORD problem =
            OpenMachine(kProfileDevicesKey + device).ReadNumber(L"Problem").value_or(0);
        adapter.isEnabled = start != kServiceDisabled && IsInProfile(device);
        adapter.isFunctional = problem == 0;
    }

    void Classify(StaticAdapter& adapter) const {
        adapter.isEthernet = IsEthernetDescription(adapter.name);
        adapter.isPpp = IsPppAdapter(adapter.name, adapter.driver);
        if (isNt4_ && adapter.isPpp) {
            // What sits on a bus is a card, whatever it is called.
            adapter.isPpp = !OpenMachine(kServicesKey + adapter.serviceName + L"\\Parameters")
                                 .ReadNumber(L"BusNumber");
        }
        adapter.adapterType = AdapterTypeText(adapter.isEthernet, adapter.isPpp);
    }

    const bool isNt4_;
    const DeviceApi& api_;
    const std::atomic<bool>& stop_;
    DriverAddresses addresses_{api_};
    // What holds for all adapters.
    const NtBindings bindings_ = NtBindings::Read();
    const NtSettings settings_;
    NetworkDevices devices_;
    std::vector<ClassEntry> entries_;
    std::unordered_map<std::wstring, const ClassEntry*> byInstance_;

    std::vector<StaticAdapter> adapters_;
    std::unordered_set<std::wstring> listed_; // cookies in lower case
};

} // namespace

std::vector<StaticAdapter> ListNtAdapters(PlatformFamily family, const DeviceApi& api,
                                          const std::atomic<bool>& stop) {
    return NtAdapterReader(family, api, stop).ReadAll();
}

} // namespace tervane
