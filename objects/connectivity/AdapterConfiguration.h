#pragma once

// Changes what TCP/IP is told of an installed adapter: whether its address and its name servers
// come from DHCP, and its static gateway. Only the registry is changed, in the form that each
// family of Windows has for it; the system reads it when it starts.
//
// Switching to DHCP keeps what was set before, so that switching back brings it back: it is put
// aside in values of our own ("Tervane ...") in the same key. It cannot stay where it is, because a
// static address wins over a lease on the NT family too, whatever the switch says.

#include "platform/PlatformFamily.h"
#include "platform/adapters/StaticAdapter.h"
#include "platform/registry/RegistryKey.h"

#include <string>
#include <string_view>

namespace tervane {

// Whether an address lets its owner talk to others.

// False for "", for "0.0.0.0", and for the addresses that systems give themselves when nobody else
// does (RFC 3927), which only neighbours in the same plight can reach. Any other text is believed.
constexpr bool IsUsableAddress(std::wstring_view address) noexcept {
    return !address.empty() && address != kNoAddress && !address.starts_with(L"169.254");
}

class AdapterConfiguration {
public:
    explicit AdapterConfiguration(PlatformFamily family = CurrentPlatformFamily(),
                                  const RegistryApi& api = RegistryApi::System()) noexcept
        : family_(family), api_(api) {}

    // Each returns a Windows error code: what the registry refused with, ERROR_FILE_NOT_FOUND for
    // an adapter without TCP/IP settings. A failure leaves a state that works, the old one or the
    // new.

    // Off: an adapter of the NT family without an address of its own keeps the one that DHCP gave
    // it last. One without any fails with ERROR_FILE_NOT_FOUND, and nothing changes. On also makes
    // the DHCP client start with the system where it is disabled.
    DWORD UseDhcpForAddress(const StaticAdapter& adapter, bool use) const;
    // On NT 4 and the 9x family this concerns all adapters. Off: the servers that were set before,
    // else those that DHCP gave; ERROR_FILE_NOT_FOUND where there are none.
    DWORD UseDhcpForNameServers(const StaticAdapter& adapter, bool use) const;
    // `gateway` is dotted decimal; "0.0.0.0" is none.
    DWORD SetGateway(const StaticAdapter& adapter, const std::wstring& gateway) const;

private:
    RegistryKey OpenKey(const std::wstring& path) const;
    DWORD StartDhcpClient() const;
    DWORD SwitchNtToDhcp(const RegistryKey& settings) const;

    PlatformFamily family_;
    const RegistryApi& api_;
};

} // namespace tervane
