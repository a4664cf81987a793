#pragma once

// The DHCP client library, by which a lease is given back or asked for where the IP Helper library
// cannot. Tests put their own here.

#include <memory>
#include <string>

namespace tervane {

class DhcpClientLibrary {
public:
    // The system's "dhcpcsvc.dll", loaded at run time; without it, nothing is done.
    static std::shared_ptr<const DhcpClientLibrary> Load();

    virtual ~DhcpClientLibrary() = default;
    // Both take the adapter's name and wait for the outcome, which only the adapter's address
    // tells afterwards.
    virtual void ReleaseParameters(const std::wstring& adapter) const = 0;
    virtual void AcquireParameters(const std::wstring& adapter) const = 0;

protected:
    DhcpClientLibrary() = default;
    DhcpClientLibrary(const DhcpClientLibrary&) = delete;
    DhcpClientLibrary& operator=(const DhcpClientLibrary&) = delete;
};

} // namespace tervane
