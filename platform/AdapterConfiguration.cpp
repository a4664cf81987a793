#include "platform/AdapterConfiguration.h"

#include "platform/RegistryList.h"
#include "platform/TcpipKeys.h"
#include "platform/UsableAddress.h"

#include <vector>

namespace tervane {
namespace {

constexpr wchar_t kNoAddress[] = L"0.0.0.0";
constexpr DWORD kStartAutomatically = 2;
constexpr DWORD kStartDisabled = 4;

// What was set before a switch to DHCP.
constexpr wchar_t kOldNameServer[] = L"Tervane NameServer";
constexpr wchar_t kOldAddress[] = L"Tervane IPAddress";
constexpr wchar_t kOldMask[] = L"Tervane IPMask";

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

// The 9x family has no switch: no address means DHCP. Either way the address, which decides, is
// written where a failure before or after it does no harm.
DWORD Switch9xAddress(const RegistryKey& settings, bool toDhcp) {
    const std::wstring address = ReadTextOr(settings, L"IPAddress");
    if (toDhcp != IsAddress(address)) {
        return ERROR_SUCCESS;
    }
    if (toDhcp) {
        return ErrorOf(settings.WriteText(kOldAddress, address) &&
                       settings.WriteText(kOldMask, ReadTextOr(settings, L"IPMask")) &&
                       settings.WriteText(L"IPAddress", kNoAddress) &&
                       settings.WriteText(L"IPMask", kNoAddress));
    }
    const std::wstring oldAddress = ReadTextOr(settings, kOldAddress);
    if (!IsAddress(oldAddress)) {
        return ERROR_FILE_NOT_FOUND;
    }
    const DWORD error = ErrorOf(settings.WriteText(L"IPMask", ReadTextOr(settings, kOldMask)) &&
                                settings.WriteText(L"IPAddress", oldAddress));
    if (error == ERROR_SUCCESS) {
        settings.DeleteValue(kOldAddress);
        settings.DeleteValue(kOldMask);
    }
    return error;
}

// Programs that know the NT family only may have left its switch here; it must not contradict.
DWORD Switch9x(const RegistryKey& settings, bool toDhcp) {
    const DWORD error = Switch9xAddress(settings, toDhcp);
    const bool hasSwitch = settings.TypeOf(L"EnableDHCP").has_value();
    return error != ERROR_SUCCESS || !hasSwitch
               ? error
               : ErrorOf(settings.WriteNumber(L"EnableDHCP", toDhcp ? 1 : 0));
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

// What DHCP gave the adapter becomes its own; nothing where it gave nothing.
DWORD AdoptLease(const RegistryKey& settings) {
    const std::vector<std::wstring> address = {ReadFirstAddress(settings, L"DhcpIPAddress")};
    const std::vector<std::wstring> mask = {ReadFirstAddress(settings, L"DhcpSubnetMask")};
    const std::vector<std::wstring> gateway = {ReadFirstAddress(settings, L"DhcpDefaultGateway")};
    if (!IsUsableAddress(address.front())) {
        return ERROR_SUCCESS;
    }
    const bool needsGateway =
        !IsAddress(ReadFirstAddress(settings, L"DefaultGateway")) && IsAddress(gateway.front());
    return ErrorOf(settings.WriteTexts(L"SubnetMask", mask) &&
                   (!needsGateway || settings.WriteTexts(L"DefaultGateway", gateway)) &&
                   settings.WriteTexts(L"IPAddress", address));
}

} // namespace

DWORD AdapterConfiguration::UseDhcpForAddress(const StaticAdapter& adapter, bool use) const {
    const RegistryKey settings = OpenKey(adapter.settingsKey);
    if (!settings.IsOpen()) {
        return GetLastError();
    }
    return Is9xFamily(family_) ? Switch9x(settings, use) : SwitchNtAddress(settings, use);
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

DWORD AdapterConfiguration::SwitchNtAddress(const RegistryKey& settings, bool toDhcp) const {
    DWORD error = ERROR_SUCCESS;
    if (toDhcp) {
        error = StartDhcpClient();
    } else if (!IsAddress(ReadFirstAddress(settings, L"IPAddress"))) {
        error = AdoptLease(settings);
    }
    return error != ERROR_SUCCESS ? error
                                  : ErrorOf(settings.WriteNumber(L"EnableDHCP", toDhcp ? 1 : 0));
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
