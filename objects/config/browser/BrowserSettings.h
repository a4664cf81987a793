#pragma once

// Internet Explorer's settings in the registry: those of the current user, and what the setup told
// of the program. A missing value reads as "". A write that the registry refuses returns false and
// leaves everything as it was.

#include "platform/registry/RegistryKey.h"

#include <string>
#include <string_view>

namespace tervane {

class BrowserSettings {
public:
    explicit BrowserSettings(const RegistryApi& api = RegistryApi::System()) : api_(api) {}

    std::wstring HomePage() const;
    bool SetHomePage(std::wstring_view address) const;

    std::wstring Version() const;
    // The folder of the program, environment variables expanded.
    std::wstring ProgramPath() const;

    // Switches automatic detection of the proxy settings in the connection settings that Windows
    // stores as one block of bytes. kNoSettings when there is no such block, or one that is too
    // short to have that switch.
    enum class Detection { kSwitched, kNoSettings, kRefused };
    Detection SetAutomaticDetection(bool enable) const;

    std::wstring AutoConfigurationScript() const;
    // "" leaves the browser without one.
    bool SetAutoConfigurationScript(std::wstring_view address) const;

    // The list of hosts that are reached without the proxy; see LocalBypass.h.
    std::wstring ProxyExceptions() const;
    bool SetProxyExceptions(std::wstring_view exceptions) const;
    bool SetLocalBypass(bool enable) const;

    // See ProxyServers.h. They may be stored while no proxy is used. Setting them switches the use
    // of the proxy on, or off with "".
    bool IsProxyEnabled() const;
    std::wstring ProxyServerText() const;
    bool SetProxyServerText(std::wstring_view text) const;

private:
    std::wstring Read(RegistryHive hive, std::wstring_view path, std::wstring_view name) const;
    RegistryKey OpenInternetSettings() const;
    RegistryKey CreateInternetSettings() const;
    bool WriteOrDelete(std::wstring_view name, std::wstring_view text) const;

    const RegistryApi& api_;
};

} // namespace tervane
