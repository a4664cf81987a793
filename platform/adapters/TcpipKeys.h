#pragma once

// Where the families of Windows keep what is set for TCP/IP; all below HKEY_LOCAL_MACHINE. The
// enumerations of adapters read there, their configuration writes there.

#include <string>
#include <string_view>

namespace tervane {

inline constexpr wchar_t kServicesKey[] = L"System\\CurrentControlSet\\Services\\";

// The NT family, for the whole machine.
inline constexpr wchar_t kTcpipParametersKey[] =
    L"System\\CurrentControlSet\\Services\\Tcpip\\Parameters";
inline constexpr wchar_t kDhcpClientKey[] = L"System\\CurrentControlSet\\Services\\DHCP";
// The 9x family, for the whole machine.
inline constexpr wchar_t kMstcpKey[] = L"System\\CurrentControlSet\\Services\\VxD\\MSTCP";
// The 9x family, for one adapter: the class keys of the instances of TCP/IP.
inline constexpr wchar_t kClassKey[] = L"System\\CurrentControlSet\\Services\\Class\\";

// For one adapter of Windows 2000 and later, by its instance identifier.
inline std::wstring TcpipInterfaceKey(std::wstring_view instance) {
    return std::wstring(kTcpipParametersKey) + L"\\Interfaces\\" + std::wstring(instance);
}

// For one adapter of NT 4, by its service.
inline std::wstring TcpipServiceKey(std::wstring_view service) {
    return kServicesKey + std::wstring(service) + L"\\Parameters\\Tcpip";
}

} // namespace tervane
