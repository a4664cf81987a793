#include "platform/adapters/Win9xAdapters.h"

#include "platform/adapters/AdapterClassification.h"
#include "platform/adapters/TcpipKeys.h"
#include "platform/registry/RegistryKey.h"
#include "platform/registry/RegistryList.h"
#include "platform/text/LetterCase.h"
#include "platform/text/RegularExpression.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tervane {
namespace {

bool IsTcpip(std::wstring_view component) noexcept {
    return StartsIgnoringAsciiCase(component, L"mstcp");
}

} // namespace

Win9xBindings Win9xBindings::Read() {
    Win9xBindings result;
    // From each component down to those that are bound to it.
    std::unordered_map<std::wstring, std::vector<std::wstring>> lower;
    std::deque<std::wstring> reached;
    const RegistryKey network = RegistryKey::Open(RegistryHive::kLocalMachine, L"Enum\\Network");
    for (const std::wstring& component : network.SubKeyNames()) {
        for (const std::wstring& number : network.OpenSubKey(component).SubKeyNames()) {
            const std::wstring instance = component + L"\\" + number;
            const std::wstring name = LowerAscii(instance);
            if (IsTcpip(name)) {
                result.instances_.emplace(name, instance);
                reached.push_back(name);
                continue;
            }
            for (const std::wstring& upper :
                 network.OpenSubKey(instance + L"\\Bindings").ValueNames()) {
                lower[LowerAscii(upper)].push_back(name);
            }
        }
    }
    while (!reached.empty()) {
        const std::wstring upper = std::move(reached.front());
        reached.pop_front();
        for (const std::wstring& name : lower[upper]) {
            if (result.instances_.emplace(name, result.instances_[upper]).second) {
                reached.push_back(name);
            }
        }
    }
    return result;
}

std::optional<Win9xBindings::Route>
Win9xBindings::FindTcpip(std::span<const std::wstring> bindings) const {
    for (const std::wstring& binding : bindings) {
        if (IsTcpip(binding)) {
            return Route{binding, true};
        }
    }
    for (const std::wstring& binding : bindings) {
        const auto found = instances_.find(LowerAscii(binding));
        if (found != instances_.end()) {
            return Route{found->second, false};
        }
    }
    return std::nullopt;
}

namespace {

constexpr DWORD kIsDisabled = 1; // ConfigFlags
// CSConfigFlags, for one hardware profile: disabled, or not there at all.
constexpr DWORD kIsOutOfProfile = 1 | 2;

RegistryKey OpenMachine(const std::wstring& path) {
    return RegistryKey::Open(RegistryHive::kLocalMachine, path);
}

bool IsNetClass(const RegistryKey& device) {
    static const RegularExpression net = RegularExpression::WholeTextMatch(L"^net$");
    net.BeginOperation();
    return net.Matches(LowerAscii(ReadTextOr(device, L"Class")));
}

// The problems of the devices that run now, by the device's place in the tree.
class DeviceProblems {
public:
    DeviceProblems() {
        const RegistryKey devices =
            RegistryKey::Open(RegistryHive::kDynamicData, L"Config Manager\\Enum");
        for (const std::wstring& name : devices.SubKeyNames()) {
            const RegistryKey device = devices.OpenSubKey(name);
            problems_.emplace(LowerAscii(ReadTextOr(device, L"HardWareKey")),
                              device.ReadNumber(L"Problem").value_or(0));
        }
    }

    // A device that does not run at all does not work, unless nothing is known of any.
    bool IsFunctional(const std::wstring& place) const {
        const auto found = problems_.find(LowerAscii(place));
        return found == problems_.end() ? problems_.empty() : found->second == 0;
    }

private:
    std::unordered_map<std::wstring, DWORD> problems_;
};

// What is set for the whole machine.
class MachineSettings {
public:
    MachineSettings() {
        const RegistryKey key = OpenMachine(kMstcpKey);
        domain_ = ReadTextOr(key, L"Domain");
        nameServers_ = ReadList(key, L"NameServer");
        isDnsStatic_ = ReadSwitch(key, L"EnableDNS").value_or(0) != 0 && !nameServers_.empty();
        winsState_ = static_cast<long>(ReadSwitch(key, L"NodeType").value_or(0));
        for (const wchar_t* name : {L"NameServer1", L"NameServer2"}) {
            for (std::wstring& server : ReadList(key, name)) {
                winsServers_.push_back(std::move(server));
            }
        }
    }

    void ApplyTo(StaticAdapter& adapter) const {
        adapter.domainName = domain_;
        adapter.nameServers = nameServers_;
        adapter.isDnsStatic = isDnsStatic_;
        adapter.winsState = winsState_;
        adapter.winsServers = winsServers_;
    }

private:
    std::wstring domain_;
    std::vector<std::wstring> nameServers_;
    std::vector<std::wstring> winsServers_;
    long winsState_ = 0;
    bool isDnsStatic_ = false;
};

// One device, which turned out to be an adapter.
class Win9xAdapterReader {
public:
    explicit Win9xAdapterReader(const std::atomic<bool>& stop) : stop_(stop) {}

    std::vector<StaticAdapter> ReadAll() {
        const RegistryKey tree = OpenMachine(L"Enum");
        for (const std::wstring& enumerator : tree.SubKeyNames()) {
            const RegistryKey devices = tree.OpenSubKey(enumerator);
            for (const std::wstring& device : devices.SubKeyNames()) {
                ReadInstances(devices.OpenSubKey(device), enumerator + L"\\" + device);
            }
        }
        return std::move(adapters_);
    }

private:
    void ReadInstances(const RegistryKey& device, const std::wstring& place) {
        for (const std::wstring& name : device.SubKeyNames()) {
            const RegistryKey instance = device.OpenSubKey(name);
            if (stop_) {
                return;
            }
            if (IsNetClass(instance)) {
                Add(instance, place + L"\\" + name);
            }
        }
    }

    void Add(const RegistryKey& device, const std::wstring& place) {
        StaticAdapter adapter;
        const std::wstring driverKey = ReadTextOr(device, L"Driver");
        const RegistryKey driver =
            driverKey.empty() ? RegistryKey() : OpenMachine(kClassKey + driverKey);
        adapter.name = ReadTextOr(device, L"DeviceDesc");
        adapter.driver = ReadTextOr(driver, L"DeviceVxDs", driverKey);
        adapter.cookie = L"Enum\\" + place;
        adapter.isEnabled = IsEnabled(device, place);
        adapter.isFunctional = problems_.IsFunctional(place);
        adapter.isEthernet = IsEthernet(adapter, device);
        adapter.isPpp = IsPppAdapter(adapter.name, adapter.driver);
        adapter.adapterType = AdapterTypeText(adapter.isEthernet, adapter.isPpp);
        settings_.ApplyTo(adapter);
        ReadTcpip(adapter, device, driver);
        adapters_.push_back(std::move(adapter));
    }

    static bool IsEnabled(const RegistryKey& device, const std::wstring& place) {
        const RegistryKey inProfile =
            RegistryKey::Open(RegistryHive::kCurrentConfig, L"Enum\\" + place);
        std::optional<DWORD> flags = inProfile.ReadNumber(L"CSConfigFlags");
        if (!flags) {
            flags = device.ReadNumber(L"CSConfigFlags");
        }
        return (flags.value_or(0) & kIsOutOfProfile) == 0 &&
               (device.ReadNumber(L"ConfigFlags").value_or(0) & kIsDisabled) == 0;
    }

    // A device on a bus of cards is taken for one whatever it is called.
    static bool IsEthernet(const StaticAdapter& adapter, const RegistryKey& device) {
        if (IsExcludedDescription(adapter.name)) {
            return false;
        }
        return NamesBus(device, L"HardwareID") || NamesBus(device, L"CompatibleIDs") ||
               NamesPhysicalBus(adapter.cookie) || IsEthernetDescription(adapter.name) ||
               IsEthernetDriver(adapter.driver);
    }

    static bool NamesBus(const RegistryKey& device, std::wstring_view name) {
        const std::vector<std::wstring> identifiers = ReadList(device, name);
        return std::any_of(identifiers.begin(), identifiers.end(), NamesPhysicalBus);
    }

    void ReadTcpip(StaticAdapter& adapter, const RegistryKey& device,
                   const RegistryKey& driver) const {
        std::vector<std::wstring> names = device.OpenSubKey(L"Bindings").ValueNames();
        if (names.empty()) {
            names = driver.OpenSubKey(L"Bindings").ValueNames();
        }
        const std::optional<Win9xBindings::Route> route = bindings_.FindTcpip(names);
        if (!route) {
            return;
        }
        adapter.boundToTcpip = route->isDirect;
        adapter.boundIndirectlyOrDirectlyToTcpip = true;
        const std::wstring key =
            ReadTextOr(OpenMachine(L"Enum\\Network\\" + route->instance), L"Driver");
        if (key.empty()) {
            return;
        }
        adapter.settingsKey = kClassKey + key;
        const RegistryKey settings = OpenMachine(adapter.settingsKey);
        adapter.ipAddress = ReadFirstAddress(settings, L"IPAddress");
        adapter.subnetMask = ReadFirstAddress(settings, L"IPMask");
        adapter.defaultGateway = ReadFirstAddress(settings, L"DefaultGateway");
        // This family has no switch for it: whoever has no address of his own asks for one.
        adapter.usingDhcp =
            ReadSwitch(settings, L"EnableDHCP").value_or(adapter.ipAddress == kNoAddress ? 1 : 0) !=
            0;
    }

    const std::atomic<bool>& stop_;
    const Win9xBindings bindings_ = Win9xBindings::Read();
    const DeviceProblems problems_;
    const MachineSettings settings_;
    std::vector<StaticAdapter> adapters_;
};

} // namespace

std::vector<StaticAdapter> List9xAdapters(const std::atomic<bool>& stop) {
    return Win9xAdapterReader(stop).ReadAll();
}

} // namespace tervane
