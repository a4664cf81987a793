#include "objects/connectivity/AdapterConfiguration.h"

#include "platform/adapters/TcpipKeys.h"
#include "platform/registry/RegistryList.h"

#include <vector>

namespace tervane {
namespace {

constexpr wchar_t kSwitch[] = L"EnableDHCP";
constexpr DWORD kStartAutomatically = 2;
constexpr DWORD kStartDisabled = 4;

// What was set before a switch to DHCP stands in values of these names.
constexpr wchar_t kAside[] = L"Tervane ";
constexpr wchar_t kOldNameServer[] = L"Tervane NameServer";

// Of an operation of the registry just now.
DWORD ErrorOf(bool success) noexcept {
    return success ? static_cast<DWORD>(ERROR_SUCCESS) : GetLastError();
}

bool IsAddress(const std::wstring& address) noexcept {
    return !address.empty() && address != kNoAddress;
}

std::wstring Join(const std::vector<std::wstring>& parts) {
    std::wstring text;
    for (const std::wstring& part : parts) {
        text += (text.empty() ? L"" : L",") + part;
    }
    return text;
}

// Gives one value what another one has; none where that is missing.
bool CopyValue(const RegistryKey& key, const std::wstring& from, const std::wstring& to) {
    if (const auto texts = key.ReadTexts(from)) {
        return key.WriteTexts(to, *texts);
    }
    if (const auto text = key.ReadText(from)) {
        return key.WriteText(to, *text);
    }
    return key.DeleteValue(to) || GetLastError() == ERROR_FILE_NOT_FOUND;
}

// The address that is set for an adapter, with its mask and its gateway. Every change writes the
// address last: while it is missing, the others say nothing.
class StaticAddress {
public:
    // The NT family has lists of texts, the 9x family texts.
    StaticAddress(const RegistryKey& settings, bool isNt)
        : settings_(settings),
          isNt_(isNt), names_{isNt ? L"SubnetMask" : L"IPMask", L"DefaultGateway", L"IPAddress"} {}

    bool IsSet() const { return IsAddress(ReadFirstAddress(settings_, L"IPAddress")); }
    bool IsAside() const {
        return IsAddress(ReadFirstAddress(settings_, kAside + std::wstring(L"IPAddress")));
    }

    // A static address wins over a lease, so it has to go. Where that fails, it stays.
    DWORD PutAside() const {
        DWORD error = ForEach(
            [&](const std::wstring& name) { return CopyValue(settings_, name, kAside + name); });
        if (error == ERROR_SUCCESS) {
            error = Clear();
            if (error != ERROR_SUCCESS) {
                TakeBack();
            }
        }
        return error;
    }

    // Where it fails, none is set.
    DWORD Restore() const {
        const DWORD error = TakeBack();
        if (error != ERROR_SUCCESS) {
            Clear();
        }
        return error;
    }

    // Of what is in use again.
    void ForgetAside() const {
        ForEach([&](const std::wstring& name) {
            settings_.DeleteValue(kAside + name);
            return true;
        });
    }

private:
    // The error of the first change that fails, which is the last one tried.
    template <typename Change>
    DWORD ForEach(Change change) const {
        for (const std::wstring& name : names_) {
            if (!change(name)) {
                return GetLastError();
            }
        }
        return ERROR_SUCCESS;
    }
    DWORD TakeBack() const {
        return ForEach(
            [&](const std::wstring& name) { return CopyValue(settings_, kAside + name, name); });
    }
    DWORD Clear() const {
        const std::wstring none = kNoAddress;
        return ForEach([&](const std::wstring& name) {
            return isNt_ ? settings_.WriteTexts(name, {&none, 1}) : settings_.WriteText(name, none);
        });
    }

    const RegistryKey& settings_;
    const bool isNt_;
    const std::wstring names_[3];
};

// The 9x family has no switch: no address means DHCP.
DWORD Switch9xAddress(const RegistryKey& settings, bool toDhcp) {
    const StaticAddress address(settings, false);
    if (toDhcp != address.IsSet()) {
        return ERROR_SUCCESS;
    }
    if (toDhcp) {
        return address.PutAside();
    }
    const DWORD error =
        address.IsAside() ? address.Restore() : static_cast<DWORD>(ERROR_FILE_NOT_FOUND);
    if (error == ERROR_SUCCESS) {
        address.ForgetAside();
    }
    return error;
}

// Programs that know the NT family only may have left its switch here; it must not contradict.
DWORD Switch9x(const RegistryKey& settings, bool toDhcp) {
    const DWORD error = Switch9xAddress(settings, toDhcp);
    const bool hasSwitch = settings.TypeOf(kSwitch).has_value();
    return error != ERROR_SUCCESS || !hasSwitch
               ? error
               : ErrorOf(settings.WriteNumber(kSwitch, toDhcp ? 1 : 0));
}

DWORD Switch9xNameServers(const RegistryKey& machine, bool toDhcp) {
    if (!toDhcp && ReadList(machine, L"NameServer").empty()) {
        return ERROR_FILE_NOT_FOUND;
    }
    return ErrorOf(machine.WriteText(L"EnableDNS", toDhcp ? L"0" : L"1"));
}

DWORD SwitchNtNameServers(const RegistryKey& settings, bool toDhcp) {
    const std::wstring current = Join(ReadList(settings, L"NameServer"));
    if (toDhcp) {
        return ErrorOf((current.empty() || settings.WriteText(kOldNameServer, current)) &&
                       settings.WriteText(L"NameServer", L""));
    }
    if (!current.empty()) {
        return ERROR_SUCCESS;
    }
    if (const std::wstring old = ReadTextOr(settings, kOldNameServer); !old.empty()) {
        const DWORD error = ErrorOf(settings.WriteText(L"NameServer", old));
        if (error == ERROR_SUCCESS) {
            settings.DeleteValue(kOldNameServer);
        }
        return error;
    }
    const std::wstring fromDhcp = Join(ReadList(settings, L"DhcpNameServer"));
    return fromDhcp.empty() ? static_cast<DWORD>(ERROR_FILE_NOT_FOUND)
                            : ErrorOf(settings.WriteText(L"NameServer", fromDhcp));
}

// What DHCP gave the adapter becomes its own.
DWORD AdoptLease(const RegistryKey& settings) {
    const std::vector<std::wstring> address = {ReadFirstAddress(settings, L"DhcpIPAddress")};
    const std::vector<std::wstring> mask = {ReadFirstAddress(settings, L"DhcpSubnetMask")};
    const std::vector<std::wstring> gateway = {ReadFirstAddress(settings, L"DhcpDefaultGateway")};
    if (!IsUsableAddress(address.front())) {
        return ERROR_FILE_NOT_FOUND;
    }
    const bool needsGateway =
        !IsAddress(ReadFirstAddress(settings, L"DefaultGateway")) && IsAddress(gateway.front());
    return ErrorOf(settings.WriteTexts(L"SubnetMask", mask) &&
                   (!needsGateway || settings.WriteTexts(L"DefaultGateway", gateway)) &&
                   settings.WriteTexts(L"IPAddress", address));
}

// Back to the address that is still set, was put aside, or came with the last lease.
DWORD SwitchNtToStatic(const RegistryKey& settings) {
    const StaticAddress address(settings, true);
    DWORD error = ERROR_SUCCESS;
    if (!address.IsSet()) {
        error = address.IsAside() ? address.Restore() : AdoptLease(settings);
    }
    if (error == ERROR_SUCCESS) {
        error = ErrorOf(settings.WriteNumber(kSwitch, 0));
    }
    if (error == ERROR_SUCCESS) {
        address.ForgetAside();
    }
    return error;
}

} // namespace

DWORD AdapterConfiguration::UseDhcpForAddress(const StaticAdapter& adapter, bool use) const {
    const RegistryKey settings = OpenKey(adapter.settingsKey);
    if (!settings.IsOpen()) {
        return GetLastError();
    }
    if (Is9xFamily(family_)) {
        return Switch9x(settings, use);
    }
    return use ? SwitchNtToDhcp(settings) : SwitchNtToStatic(settings);
}

DWORD AdapterConfiguration::UseDhcpForNameServers(const StaticAdapter& adapter, bool use) const {
    std::wstring path = adapter.settingsKey;
    if (Is9xFamily(family_)) {
        path = kMstcpKey;
    } else if (family_ == PlatformFamily::kNt4) {
        path = kTcpipParametersKey;
    }
    const RegistryKey key = OpenKey(path);
    if (!key.IsOpen()) {
        return GetLastError();
    }
    return Is9xFamily(family_) ? Switch9xNameServers(key, use) : SwitchNtNameServers(key, use);
}

DWORD AdapterConfiguration::SetGateway(const StaticAdapter& adapter,
                                       const std::wstring& gateway) const {
    const RegistryKey settings = OpenKey(adapter.settingsKey);
    if (!settings.IsOpen()) {
        return GetLastError();
    }
    if (Is9xFamily(family_)) {
        return ErrorOf(settings.WriteText(L"DefaultGateway", gateway));
    }
    return ErrorOf(settings.WriteTexts(L"DefaultGateway", {&gateway, 1}));
}

RegistryKey AdapterConfiguration::OpenKey(const std::wstring& path) const {
    if (path.empty()) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return {};
    }
    return RegistryKey::Open(RegistryHive::kLocalMachine, path, KEY_QUERY_VALUE | KEY_SET_VALUE,
                             api_);
}

// The switch first: with it and an address, the address still counts.
DWORD AdapterConfiguration::SwitchNtToDhcp(const RegistryKey& settings) const {
    const DWORD before = ReadSwitch(settings, kSwitch).value_or(0);
    DWORD error = StartDhcpClient();
    if (error == ERROR_SUCCESS) {
        error = ErrorOf(settings.WriteNumber(kSwitch, 1));
    }
    const StaticAddress address(settings, true);
    if (error == ERROR_SUCCESS && address.IsSet()) {
        error = address.PutAside();
        if (error != ERROR_SUCCESS) {
            settings.WriteNumber(kSwitch, before);
        }
    }
    return error;
}

DWORD AdapterConfiguration::StartDhcpClient() const {
    const DWORD start =
        RegistryKey::Open(RegistryHive::kLocalMachine, kDhcpClientKey, KEY_READ, api_)
            .ReadNumber(L"Start")
            .value_or(kStartAutomatically);
    if (start != kStartDisabled) {
        return ERROR_SUCCESS;
    }
    const RegistryKey service = OpenKey(kDhcpClientKey);
    return ErrorOf(service.IsOpen() && service.WriteNumber(L"Start", kStartAutomatically));
}

} // namespace tervane
