#include "bench/ManyAdapters.h"

#include "bench/Comparison.h"
#include "bench/LateBound.h"
#include "platform/adapters/NtAdapters.h"
#include "platform/adapters/Win9xAdapters.h"
#include "platform/registry/RegistryKey.h"

#include <functional>
#include <string>
#include <vector>

namespace bench {
namespace {

using tervane::RegistryHive;
using tervane::RegistryKey;
using tervane::StaticAdapter;

constexpr wchar_t kPlace[] = L"Software\\TervaneBench adapters ";
constexpr wchar_t kNetworkClass[] = L"{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr wchar_t kCards[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
const std::wstring kControlSet = L"System\\CurrentControlSet\\";

// A registry of its own in the place of HKEY_LOCAL_MACHINE, filled by `add` with adapters.
class AdapterRegistry {
public:
    AdapterRegistry(int count, const std::function<void(const std::wstring&)>& add)
        : path_(kPlace + std::to_wstring(count)) {
        RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
        if (RegCreateKeyW(HKEY_CURRENT_USER, path_.c_str(), root_.Put()) != ERROR_SUCCESS) {
            Fail("making a registry for adapters", E_FAIL);
        }
        Use();
        std::vector<std::wstring> devices;
        for (int i = 0; i < count; ++i) {
            const std::wstring number = std::to_wstring(1000 + i);
            add(number);
            devices.push_back(L"\\Device\\{" + number + L"}");
        }
        RegistryKey::Create(RegistryHive::kLocalMachine, kControlSet + L"Services\\Tcpip\\Linkage")
            .WriteTexts(L"Bind", devices);
    }
    ~AdapterRegistry() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
    }
    AdapterRegistry(const AdapterRegistry&) = delete;
    AdapterRegistry& operator=(const AdapterRegistry&) = delete;

    void Use() const { RegOverridePredefKey(HKEY_LOCAL_MACHINE, root_.Get()); }

private:
    std::wstring path_;
    tervane::UniqueRegistryKey root_;
};

RegistryKey Create(const std::wstring& path) {
    return RegistryKey::Create(RegistryHive::kLocalMachine, path);
}

// As Windows XP has it: card, class key, device, settings.
void AddNtAdapter(const std::wstring& number) {
    const std::wstring instance = L"{" + number + L"}";
    const std::wstring driverKey = std::wstring(kNetworkClass) + L"\\" + number;
    const RegistryKey card = Create(std::wstring(kCards) + L"\\" + number);
    card.WriteText(L"ServiceName", instance);
    card.WriteText(L"Description", L"Intel(R) PRO/1000 MT Network Connection");
    Create(kControlSet + L"Control\\Class\\" + driverKey).WriteText(L"NetCfgInstanceId", instance);
    const RegistryKey device = Create(kControlSet + L"Enum\\PCI\\VEN_8086\\" + number);
    device.WriteText(L"ClassGUID", kNetworkClass);
    device.WriteText(L"Driver", driverKey);
    device.WriteText(L"DeviceDesc", L"Intel(R) PRO/1000 MT Network Connection");
    const RegistryKey settings =
        Create(kControlSet + L"Services\\Tcpip\\Parameters\\Interfaces\\" + instance);
    settings.WriteNumber(L"EnableDHCP", 1);
    settings.WriteText(L"NameServer", L"10.0.0.1,10.0.0.2");
}

// As Windows 98 has it: device, class key, an instance of TCP/IP and its class key.
void Add9xAdapter(const std::wstring& number) {
    const std::wstring classes = kControlSet + L"Services\\Class\\";
    const RegistryKey device = Create(L"Enum\\PCI\\VEN_8086\\" + number);
    device.WriteText(L"Class", L"Net");
    device.WriteText(L"DeviceDesc", L"Intel PRO/1000 MT Network Connection");
    device.WriteText(L"Driver", L"Net\\" + number);
    Create(classes + L"Net\\" + number).WriteText(L"DeviceVxDs", L"e1000.sys");
    Create(L"Enum\\PCI\\VEN_8086\\" + number + L"\\Bindings").WriteText(L"MSTCP\\" + number, L"");
    Create(L"Enum\\Network\\MSTCP\\" + number).WriteText(L"Driver", L"NetTrans\\" + number);
    Create(classes + L"NetTrans\\" + number).WriteText(L"IPAddress", L"10.0.0.3");
}

void CompareFamily(const char* hundred, const char* thousand,
                   const std::function<void(const std::wstring&)>& add,
                   const std::function<std::vector<StaticAdapter>()>& list) {
    constexpr int kFew = 10;
    const AdapterRegistry few(kFew, add);
    auto listOf = [&](const AdapterRegistry& registry, std::size_t count) {
        registry.Use();
        if (list().size() != count) {
            Fail("listing the adapters", E_UNEXPECTED);
        }
    };
    for (const int count : {100, 1000}) {
        const AdapterRegistry many(count, add);
        Compare(
            {count == 100 ? hundred : thousand, 1.15, 1, 3},
            [&] { listOf(many, static_cast<std::size_t>(count)); },
            [&] {
                for (int i = 0; i < count / kFew; ++i) {
                    listOf(few, kFew);
                }
            });
    }
}

// The registry of AddNtAdapter by the system's own functions: every key is opened and every value
// read once, and what is missing is asked for the narrow way, too, as everybody must whose code
// runs on all families of Windows.
class BareReader {
public:
    BareReader(HKEY parent, const std::wstring& path) {
        if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, key_.Put()) != ERROR_SUCCESS) {
            RegOpenKeyExA(parent, Narrow(path).c_str(), 0, KEY_READ, key_.Put());
        }
    }
    void Read(std::initializer_list<const wchar_t*> names) const {
        for (const wchar_t* name : names) {
            BYTE value[512];
            DWORD size = sizeof value;
            if (key_ && RegQueryValueExW(key_.Get(), name, nullptr, nullptr, value, &size) !=
                            ERROR_SUCCESS) {
                size = sizeof value;
                RegQueryValueExA(key_.Get(), Narrow(name).c_str(), nullptr, nullptr, value, &size);
            }
        }
    }
    void ReadSubKeys(std::initializer_list<const wchar_t*> names) const {
        wchar_t name[256];
        DWORD length = std::size(name);
        for (DWORD i = 0; RegEnumKeyExW(key_.Get(), i, name, &length, nullptr, nullptr, nullptr,
                                        nullptr) == ERROR_SUCCESS;
             ++i, length = std::size(name)) {
            BareReader(key_.Get(), name).Read(names);
        }
    }

private:
    static std::string Narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

    tervane::UniqueRegistryKey key_;
};

void ReadNtBare(int count) {
    const auto open = [](const std::wstring& path) {
        return BareReader(HKEY_LOCAL_MACHINE, kControlSet + path);
    };
    open(std::wstring(L"Control\\Class\\") + kNetworkClass)
        .ReadSubKeys({L"NetCfgInstanceId", L"DriverDesc", L"Driver", L"*IfType"});
    open(L"Enum\\PCI\\VEN_8086")
        .ReadSubKeys({L"ClassGUID", L"DeviceDesc", L"Service", L"ConfigFlags", L"Driver"});
    BareReader(HKEY_LOCAL_MACHINE, kCards).ReadSubKeys({L"ServiceName", L"Description"});
    for (int i = 0; i < count; ++i) {
        const std::wstring number = std::to_wstring(1000 + i);
        const std::wstring instance = L"{" + number + L"}";
        BareReader(HKEY_CURRENT_CONFIG, kControlSet + L"Enum\\PCI\\VEN_8086\\" + number)
            .Read({L"CSConfigFlags"});
        open(L"Services\\Tcpip\\Parameters\\Interfaces\\" + instance)
            .Read({L"EnableDHCP", L"IPAddress", L"SubnetMask", L"DefaultGateway", L"Domain",
                   L"NameServer"});
        open(L"Services\\NetBT\\Parameters\\Interfaces\\Tcpip_" + instance)
            .Read({L"NameServerList"});
        open(L"Services\\" + instance + L"\\Linkage").Read({L"Bind"});
    }
}

void CompareWithBareReads() {
    constexpr int kCount = 1000;
    const AdapterRegistry many(kCount, AddNtAdapter);
    Compare(
        {"1,000 installed adapters (NT) : the bare registry reads", 1.3, 1, 3},
        [] {
            if (tervane::ListNtAdapters(tervane::PlatformFamily::kXp).size() != kCount) {
                Fail("listing the adapters", E_UNEXPECTED);
            }
        },
        [] { ReadNtBare(kCount); });
}

void GatherFacts(const AdapterRegistry& registry, long count) {
    registry.Use();
    Create(L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0").WriteNumber(L"~MHz", 1000);
    const tervane::Variant found = LateBound(L"Ostrel.GeneralSysInfo").Get(L"NumStaticAdapters");
    if (found.Get().lVal != count) {
        Fail("gathering the facts of a machine with many adapters", E_UNEXPECTED);
    }
}

// What is gathered besides the adapters costs the same however many there are: machines with a
// single one make that part equal on both sides.
void CompareFacts(const char* title, int count) {
    constexpr int kParts = 10;
    const AdapterRegistry one(1, AddNtAdapter);
    const AdapterRegistry few(count / kParts, AddNtAdapter);
    const AdapterRegistry many(count, AddNtAdapter);
    Compare(
        {title, 1.15, 1, 1},
        [&] {
            GatherFacts(many, count);
            for (int i = 1; i < kParts; ++i) {
                GatherFacts(one, 1);
            }
        },
        [&] {
            for (int i = 0; i < kParts; ++i) {
                GatherFacts(few, count / kParts);
            }
        });
}

} // namespace

void CompareAdapterLists() {
    CompareWithBareReads();
    CompareFamily("100 adapters (NT) in one list : in lists of 10",
                  "1,000 adapters (NT) in one list : in lists of 10", AddNtAdapter,
                  [] { return tervane::ListNtAdapters(tervane::PlatformFamily::kXp); });
    CompareFamily("100 adapters (9x) in one list : in lists of 10",
                  "1,000 adapters (9x) in one list : in lists of 10", Add9xAdapter,
                  [] { return tervane::List9xAdapters(); });
    const LateBound keepLoaded(L"Ostrel.GeneralSysInfo");
    CompareFacts("GeneralSysInfo, 100 adapters and 9 x 1 : 10 x 10", 100);
    CompareFacts("GeneralSysInfo, 1,000 adapters and 9 x 1 : 10 x 100", 1000);
}

} // namespace bench
