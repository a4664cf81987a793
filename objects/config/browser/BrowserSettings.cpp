#include "objects/config/browser/BrowserSettings.h"

#include "objects/config/browser/ProxyServers.h"
#include "platform/text/EnvironmentText.h"

#include <optional>

namespace tervane {
namespace {

constexpr wchar_t kMain[] = L"Software\\Microsoft\\Internet Explorer\\Main";
constexpr wchar_t kStartPage[] = L"Start Page";
constexpr wchar_t kProgram[] = L"SOFTWARE\\Microsoft\\Internet Explorer";
constexpr const wchar_t* kSetups[] = {L"SOFTWARE\\Microsoft\\IE Setup\\Setup",
                                      L"SOFTWARE\\Microsoft\\IE4\\SETUP"};
constexpr wchar_t kInternetSettings[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr wchar_t kConnections[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Connections";
constexpr wchar_t kConnectionSettings[] = L"DefaultConnectionSettings";
constexpr wchar_t kAutoConfigUrl[] = L"AutoConfigURL";
constexpr wchar_t kProxyServer[] = L"ProxyServer";
constexpr wchar_t kProxyEnable[] = L"ProxyEnable";
constexpr wchar_t kProxyOverride[] = L"ProxyOverride";

// The byte of the connection settings that holds the flags.
constexpr std::size_t kFlagsOffset = 8;
constexpr unsigned char kDirect = 1;
constexpr unsigned char kDetect = 8;

bool DeleteIfThere(const RegistryKey& key, std::wstring_view name) {
    return !key.TypeOf(name) || key.DeleteValue(name);
}

bool RestoreText(const RegistryKey& key, std::wstring_view name,
                 const std::optional<std::wstring>& text) {
    return text ? key.WriteText(name, *text) : DeleteIfThere(key, name);
}

bool RestoreNumber(const RegistryKey& key, std::wstring_view name,
                   const std::optional<DWORD>& number) {
    return number ? key.WriteNumber(name, *number) : DeleteIfThere(key, name);
}

bool EnableProxy(const RegistryKey& key, std::wstring_view servers) {
    const std::optional<std::wstring> before = key.ReadText(kProxyServer);
    if (!key.WriteText(kProxyServer, servers)) {
        return false;
    }
    if (key.WriteNumber(kProxyEnable, 1)) {
        return true;
    }
    RestoreText(key, kProxyServer, before);
    return false;
}

bool DisableProxy(const RegistryKey& key) {
    const std::optional<DWORD> before = key.ReadNumber(kProxyEnable);
    if (!key.WriteNumber(kProxyEnable, 0)) {
        return false;
    }
    if (DeleteIfThere(key, kProxyServer)) {
        return true;
    }
    RestoreNumber(key, kProxyEnable, before);
    return false;
}

} // namespace

std::wstring BrowserSettings::Read(RegistryHive hive, std::wstring_view path,
                                   std::wstring_view name) const {
    return RegistryKey::Open(hive, path, KEY_QUERY_VALUE, api_).ReadText(name).value_or(L"");
}

RegistryKey BrowserSettings::OpenInternetSettings() const {
    return RegistryKey::Open(RegistryHive::kCurrentUser, kInternetSettings, KEY_QUERY_VALUE, api_);
}

RegistryKey BrowserSettings::CreateInternetSettings() const {
    return RegistryKey::Create(RegistryHive::kCurrentUser, kInternetSettings,
                               KEY_QUERY_VALUE | KEY_SET_VALUE, api_);
}

bool BrowserSettings::WriteOrDelete(std::wstring_view name, std::wstring_view text) const {
    const RegistryKey key = CreateInternetSettings();
    return key.IsOpen() && (text.empty() ? DeleteIfThere(key, name) : key.WriteText(name, text));
}

std::wstring BrowserSettings::HomePage() const {
    return Read(RegistryHive::kCurrentUser, kMain, kStartPage);
}

bool BrowserSettings::SetHomePage(std::wstring_view address) const {
    return RegistryKey::Create(RegistryHive::kCurrentUser, kMain, KEY_SET_VALUE, api_)
        .WriteText(kStartPage, address);
}

std::wstring BrowserSettings::Version() const {
    return Read(RegistryHive::kLocalMachine, kProgram, L"Version");
}

std::wstring BrowserSettings::ProgramPath() const {
    for (const wchar_t* setup : kSetups) {
        const std::wstring path = Read(RegistryHive::kLocalMachine, setup, L"Path");
        if (!path.empty()) {
            return ExpandEnvironment(path);
        }
    }
    return {};
}

BrowserSettings::Detection BrowserSettings::SetAutomaticDetection(bool enable) const {
    const auto open = [this](REGSAM access) {
        return RegistryKey::Open(RegistryHive::kCurrentUser, kConnections, access, api_);
    };
    std::optional<RegistryValue> settings = open(KEY_QUERY_VALUE).Read(kConnectionSettings);
    if (!settings || settings->type != REG_BINARY || settings->bytes.size() <= kFlagsOffset) {
        return Detection::kNoSettings;
    }
    // Every other way of connecting is switched off along with it, on purpose.
    settings->bytes[kFlagsOffset] = enable ? kDirect | kDetect : kDirect;
    return open(KEY_SET_VALUE).WriteBytes(kConnectionSettings, settings->bytes)
               ? Detection::kSwitched
               : Detection::kRefused;
}

std::wstring BrowserSettings::AutoConfigurationScript() const {
    return OpenInternetSettings().ReadText(kAutoConfigUrl).value_or(L"");
}

bool BrowserSettings::SetAutoConfigurationScript(std::wstring_view address) const {
    return WriteOrDelete(kAutoConfigUrl, address);
}

std::wstring BrowserSettings::ProxyExceptions() const {
    return OpenInternetSettings().ReadText(kProxyOverride).value_or(L"");
}

bool BrowserSettings::SetProxyExceptions(std::wstring_view exceptions) const {
    return WriteOrDelete(kProxyOverride, WithExceptions(ProxyExceptions(), exceptions));
}

bool BrowserSettings::SetLocalBypass(bool enable) const {
    const std::wstring list = ProxyExceptions();
    if (HasLocalBypass(list) == enable) {
        return true;
    }
    return WriteOrDelete(kProxyOverride, enable ? WithLocalBypass(list) : WithoutLocalBypass(list));
}

bool BrowserSettings::IsProxyEnabled() const {
    return OpenInternetSettings().ReadNumber(kProxyEnable).value_or(0) != 0;
}

std::wstring BrowserSettings::ProxyServerText() const {
    return OpenInternetSettings().ReadText(kProxyServer).value_or(L"");
}

bool BrowserSettings::SetProxyServerText(std::wstring_view text) const {
    const RegistryKey key = CreateInternetSettings();
    return key.IsOpen() && (text.empty() ? DisableProxy(key) : EnableProxy(key, text));
}

} // namespace tervane
